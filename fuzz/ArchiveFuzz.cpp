#include "platform/CArchive.h"
#include "platform/CArchiveException.h"
#include "platform/CMemFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

/// An object with all that objects have: numbers, a text after a length, and objects inside.
class FuzzedObject : public CObject {
    DECLARE_SERIAL(FuzzedObject)

    void Serialize(CArchive& a_archive) override
    {
        if (a_archive.IsStoring()) {
            a_archive << m_number;
            AfxWriteStringLength(a_archive, m_units.size() / static_cast<std::size_t>(m_unitSize),
                                 m_unitSize == 2);
            a_archive.Write(m_units.data(), m_units.size());
            a_archive.WriteObject(m_left.get());
            a_archive.WriteObject(m_right.get());
            return;
        }
        a_archive >> m_number;
        const std::uint64_t length = AfxReadStringLength(a_archive, m_unitSize);
        m_units.resize(static_cast<std::size_t>(length) * static_cast<std::size_t>(m_unitSize));
        a_archive.Read(m_units.data(), m_units.size());
        m_left = a_archive.ReadObject(FuzzedObject::GetThisClass());
        m_right = a_archive.ReadObject();
    }

    std::int32_t m_number = 0;
    int m_unitSize = 1;
    std::string m_units;
    std::unique_ptr<CObject> m_left;
    std::unique_ptr<CObject> m_right;
};
IMPLEMENT_SERIAL(FuzzedObject, CObject, 3)

namespace {

std::vector<std::byte> Store(const CObject* a_object)
{
    CMemFile file;
    CArchive archive(&file, CArchive::store, 7);
    archive.WriteObject(a_object);
    archive.Close();
    return file.Detach();
}

std::unique_ptr<CObject> Load(std::span<const std::byte> a_bytes)
{
    CMemFile file(a_bytes);
    CArchive archive(&file, CArchive::load, 5);
    return archive.ReadObject();
}

} // namespace

// Bytes are an object or a refusal; an object's own bytes give the same bytes again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    try {
        const std::vector<std::byte> stored =
            Store(Load({reinterpret_cast<const std::byte*>(a_data), a_size}).get());
        if (Store(Load(stored).get()) != stored)
            std::abort();
    } catch (const CArchiveException&) {
        return 0;
    }
    return 0;
}
