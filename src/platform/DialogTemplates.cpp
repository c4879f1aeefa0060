#include "platform/DialogTemplates.h"

#include "platform/CodePage.h"
#include "platform/DialogIds.h"
#include "platform/ModulePath.h"

#include <algorithm>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Table {
    const void* module;
    std::span<const DialogTemplate> templates;
};

// Never destroyed: modules leave it in their own static destructors, in an order that nobody knows.
struct Register {
    std::mutex mutex;
    std::vector<Table> tables;
};

Register& Tables()
{
    static auto* const S_register = new Register;
    return *S_register;
}

// Under the mutex.
template<typename Wanted>
const DialogTemplate* FirstOf(const void* a_module, const Wanted& a_wanted)
{
    for (const Table& table : Tables().tables) {
        if (table.module != a_module)
            continue;
        const auto found = std::ranges::find_if(table.templates, a_wanted);
        if (found != table.templates.end())
            return &*found;
    }
    return nullptr;
}

void RequireThat(bool a_holds, const DialogTemplate& a_template, const std::string& a_otherwise)
{
    if (!a_holds)
        throw std::invalid_argument("Szablon okna "_cp1250 + std::to_string(a_template.number) + ": " +
                                    a_otherwise);
}

void Check(const DialogTemplate& a_template)
{
    RequireThat(a_template.number != 0, a_template, "numer 0"_cp1250);
    std::set<UINT> ids;
    for (const DialogControl& control : a_template.controls)
        RequireThat(control.id == IDC_STATIC || ids.insert(control.id).second, a_template,
                    "powtórzony identyfikator "_cp1250 + std::to_string(control.id));
    const auto defaults = std::ranges::count_if(a_template.controls, &DialogControl::isDefault);
    RequireThat(defaults <= 1, a_template, "więcej niż jeden przycisk domyślny"_cp1250);
}

} // namespace

DialogTemplates::DialogTemplates(std::span<const DialogTemplate> a_table) : m_table(a_table.data())
{
    // The table's own address says which module it is part of.
    const auto address = reinterpret_cast<HINSTANCE>(const_cast<DialogTemplate*>(m_table));
    const void* const module = ModulePath::GetBase(address);
    std::set<UINT> numbers;
    Register& tables = Tables();
    const std::scoped_lock lock(tables.mutex);
    for (const DialogTemplate& one : a_table) {
        Check(one);
        const auto hasItsNumber = [&one](const auto& a_other) { return a_other.number == one.number; };
        RequireThat(numbers.insert(one.number).second && FirstOf(module, hasItsNumber) == nullptr, one,
                    "powtórzony numer"_cp1250);
    }
    tables.tables.push_back({module, a_table});
}

DialogTemplates::~DialogTemplates()
{
    Register& tables = Tables();
    const std::scoped_lock lock(tables.mutex);
    std::erase_if(tables.tables,
                  [this](const Table& a_table) { return a_table.templates.data() == m_table; });
}

const DialogTemplate* DialogTemplates::Find(HINSTANCE a_module, UINT a_number)
{
    const std::scoped_lock lock(Tables().mutex);
    return FirstOf(ModulePath::GetBase(a_module),
                   [a_number](const DialogTemplate& a_one) { return a_one.number == a_number; });
}

const DialogTemplate* DialogTemplates::Find(HINSTANCE a_module, std::wstring_view a_name)
{
    const std::scoped_lock lock(Tables().mutex);
    return FirstOf(ModulePath::GetBase(a_module), [a_name](const DialogTemplate& a_one) {
        return a_one.name != nullptr && a_one.name == a_name;
    });
}
