#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <memory>
#include <string_view>

class CArchive;
class CObject;

/// What is known of a class at run time. One static object a class; compared by address.
struct CRuntimeClass {
    const char* m_lpszClassName;
    /// The form of the class's fields in an archive, 0 to 65535; S_noSchema for a class that doesn't travel.
    std::uint32_t m_wSchema;
    /// An object without arguments; null for a class that doesn't travel.
    std::unique_ptr<CObject> (*m_pfnCreateObject)();
    /// Null for CObject.
    const CRuntimeClass* m_pBaseClass;

    static constexpr std::uint32_t S_noSchema = 0xFFFFFFFF;

    /// True for the class itself too.
    KALVENTO_API bool IsDerivedFrom(const CRuntimeClass* a_class) const;
    /// The serial class of that name, registered by IMPLEMENT_SERIAL in any loaded library; null for none. Where
    /// several bear one name, the one registered first. Safe from any thread.
    KALVENTO_API static const CRuntimeClass* FindSerialClass(std::string_view a_name);
};

/// The root of what travels through an archive by its class name. An object belongs to one thread at a time.
///
/// A serial class says DECLARE_SERIAL(Name) in its declaration and IMPLEMENT_SERIAL(Name, Base, schema) in its source,
/// can be made without arguments, and overrides Serialize. Change the schema when the fields change: an archive with
/// another schema is refused.
class KALVENTO_API CObject {
public:
    virtual ~CObject() = default;

    static const CRuntimeClass* GetThisClass();
    virtual const CRuntimeClass* GetRuntimeClass() const { return GetThisClass(); }
    bool IsKindOf(const CRuntimeClass* a_class) const { return GetRuntimeClass()->IsDerivedFrom(a_class); }
    bool IsSerializable() const { return GetRuntimeClass()->m_pfnCreateObject != nullptr; }

    /// Stores the fields or loads them, as CArchive::IsStoring says. A load that raises may leave the object half read;
    /// whoever loads drops it then. CObject itself has no fields.
    virtual void Serialize(CArchive& a_archive);

protected:
    // Copied by derived classes alone: a copy through the base would lose the fields.
    CObject() = default;
    CObject(const CObject&) = default;
    CObject(CObject&&) = default;
    CObject& operator=(const CObject&) = default;
    CObject& operator=(CObject&&) = default;
};

namespace kalvento::internal {

/// Keeps a class in the register as long as the library that holds it is loaded.
class KALVENTO_API SerialClassRegistrar {
public:
    explicit SerialClassRegistrar(const CRuntimeClass* a_class);
    SerialClassRegistrar(const SerialClassRegistrar&) = delete;
    SerialClassRegistrar& operator=(const SerialClassRegistrar&) = delete;
    ~SerialClassRegistrar();

private:
    const CRuntimeClass* m_class;
};

} // namespace kalvento::internal

/// In the declaration of a serial class; leaves the access public.
#define DECLARE_SERIAL(ClassName)                                                                            \
public:                                                                                                      \
    static const CRuntimeClass* GetThisClass();                                                              \
    static std::unique_ptr<CObject> CreateObject();                                                          \
    const CRuntimeClass* GetRuntimeClass() const override                                                    \
    {                                                                                                        \
        return GetThisClass();                                                                               \
    }

/// In the source of a serial class, in the global namespace. a_schema: 0 to 65535.
#define IMPLEMENT_SERIAL(ClassName, BaseName, Schema)                                                        \
    static_assert((Schema) >= 0 && (Schema) <= 0xFFFF);                                                      \
    std::unique_ptr<CObject> ClassName::CreateObject()                                                       \
    {                                                                                                        \
        return std::make_unique<ClassName>();                                                                \
    }                                                                                                        \
    const CRuntimeClass* ClassName::GetThisClass()                                                           \
    {                                                                                                        \
        static const CRuntimeClass S_class{#ClassName, Schema, &ClassName::CreateObject,                     \
                                           BaseName::GetThisClass()};                                        \
        return &S_class;                                                                                     \
    }                                                                                                        \
    static const kalvento::internal::SerialClassRegistrar S_registrarOf##ClassName(ClassName::GetThisClass());
