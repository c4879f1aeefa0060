#include "platform/CObject.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

// Never destroyed: libraries leave the register in their own static destructors, in an order that nobody knows.
struct Register {
    std::mutex mutex;
    std::vector<const CRuntimeClass*> classes;
};

Register& SerialClasses()
{
    static auto* const S_register = new Register;
    return *S_register;
}

} // namespace

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass* a_class) const
{
    for (const CRuntimeClass* level = this; level != nullptr; level = level->m_pBaseClass)
        if (level == a_class)
            return true;
    return false;
}

const CRuntimeClass* CRuntimeClass::FindSerialClass(std::string_view a_name)
{
    Register& serial = SerialClasses();
    const std::scoped_lock lock(serial.mutex);
    const auto found = std::ranges::find_if(serial.classes, [a_name](const CRuntimeClass* a_class) {
        return a_name == a_class->m_lpszClassName;
    });
    return found == serial.classes.end() ? nullptr : *found;
}

const CRuntimeClass* CObject::GetThisClass()
{
    static const CRuntimeClass S_class{"CObject", CRuntimeClass::S_noSchema, nullptr, nullptr};
    return &S_class;
}

void CObject::Serialize(CArchive& /*a_archive*/) {}

namespace kalvento::internal {

SerialClassRegistrar::SerialClassRegistrar(const CRuntimeClass* a_class) : m_class(a_class)
{
    Register& serial = SerialClasses();
    const std::scoped_lock lock(serial.mutex);
    serial.classes.push_back(a_class);
}

SerialClassRegistrar::~SerialClassRegistrar()
{
    Register& serial = SerialClasses();
    const std::scoped_lock lock(serial.mutex);
    std::erase(serial.classes, m_class);
}

} // namespace kalvento::internal
