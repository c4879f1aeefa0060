#include "platform/CArchive.h"

#include "platform/CArchiveException.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr std::uint16_t S_noObjectTag = 0x0000;
constexpr std::uint16_t S_newClassTag = 0xFFFF;
constexpr std::size_t S_defaultBufferSize = 4096;

// Marks of AfxWriteStringLength: each says that the length is in the next, wider number. The 16-bit one below the last
// says that the text is wide.
constexpr std::uint8_t S_lengthIn16Bits = 0xFF;
constexpr std::uint16_t S_lengthIn32Bits = 0xFFFF;
constexpr std::uint16_t S_wideText = 0xFFFE;
constexpr std::uint32_t S_lengthIn64Bits = 0xFFFFFFFF;

std::string Quote(std::string_view a_name)
{
    return '"' + std::string(a_name) + '"';
}

[[noreturn]] void Refuse(CArchiveException::Cause a_cause, const std::string& a_message)
{
    throw CArchiveException(a_cause, a_message);
}

/// The length as written. a_characterSize becomes 2 after the mark of wide text, else 1.
std::uint64_t ReadLength(CArchive& a_archive, int& a_characterSize)
{
    a_characterSize = 1;
    std::uint8_t length8 = 0;
    a_archive >> length8;
    if (length8 != S_lengthIn16Bits)
        return length8;
    std::uint16_t length16 = 0;
    a_archive >> length16;
    if (length16 == S_wideText) {
        a_characterSize = 2;
        a_archive >> length8;
        if (length8 != S_lengthIn16Bits)
            return length8;
        a_archive >> length16;
        if (length16 == S_wideText)
            Refuse(CArchiveException::badIndex,
                   "AfxReadStringLength: powtórzony znacznik tekstu szerokiego"_cp1250);
    }
    if (length16 != S_lengthIn32Bits)
        return length16;
    std::uint32_t length32 = 0;
    a_archive >> length32;
    if (length32 != S_lengthIn64Bits)
        return length32;
    std::uint64_t length64 = 0;
    a_archive >> length64;
    return length64;
}

/// Counts a level of nested objects for as long as it lives.
class Level {
public:
    explicit Level(unsigned int& a_depth) : m_depth(a_depth) { ++m_depth; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --m_depth; }

private:
    unsigned int& m_depth;
};

} // namespace

CArchive::CArchive(CFile* a_file, Mode a_mode, int a_bufferSize)
    : m_file(a_file),
      m_mode(a_mode),
      m_bufferSize(a_bufferSize > 0 ? static_cast<std::size_t>(a_bufferSize) : S_defaultBufferSize)
{}

CArchive::~CArchive()
{
    try {
        Close();
    } catch (...) { // NOLINT(bugprone-empty-catch): a destructor has nobody to tell, and the header says so.
    }
}

void CArchive::Close()
{
    if (m_file == nullptr)
        return;
    if (IsStoring())
        Flush();
    m_file = nullptr;
}

void CArchive::CheckDirection(Mode a_mode) const
{
    if (m_file == nullptr)
        Refuse(CArchiveException::genericException, "CArchive: archiwum jest zamknięte"_cp1250);
    if (m_mode == a_mode)
        return;
    if (IsLoading())
        Refuse(CArchiveException::readOnly, "CArchive: zapis do archiwum otwartego do odczytu"_cp1250);
    Refuse(CArchiveException::writeOnly, "CArchive: odczyt z archiwum otwartego do zapisu"_cp1250);
}

void CArchive::Flush()
{
    if (m_buffer.empty())
        return;
    m_file->Write(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
}

void CArchive::Write(const void* a_bytes, std::size_t a_size)
{
    CheckDirection(store);
    if (a_size >= m_bufferSize) {
        Flush();
        m_file->Write(a_bytes, a_size);
        return;
    }
    if (a_size > m_bufferSize - m_buffer.size())
        Flush();
    const auto* const bytes = static_cast<const std::byte*>(a_bytes);
    m_buffer.insert(m_buffer.end(), bytes, bytes + a_size);
}

std::uint64_t CArchive::GetBytesLeft() const
{
    CheckDirection(load);
    return m_buffer.size() - m_next + (m_file->GetLength() - m_file->GetPosition());
}

void CArchive::Read(void* a_bytes, std::size_t a_size)
{
    const std::uint64_t left = GetBytesLeft();
    if (a_size > left)
        Refuse(CArchiveException::endOfFile, "CArchive::Read: potrzeba bajtów: "_cp1250 +
                                                 std::to_string(a_size) + ", zostało: "_cp1250 +
                                                 std::to_string(left));
    auto* out = static_cast<std::byte*>(a_bytes);
    while (a_size > 0) {
        if (m_next == m_buffer.size()) {
            const auto inFile = m_file->GetLength() - m_file->GetPosition();
            m_buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(m_bufferSize, inFile)));
            m_buffer.resize(m_file->Read(m_buffer.data(), m_buffer.size()));
            m_next = 0;
            if (m_buffer.empty())
                Refuse(CArchiveException::endOfFile,
                       "CArchive::Read: plik skrócono w trakcie odczytu"_cp1250);
        }
        const std::size_t taken = std::min(a_size, m_buffer.size() - m_next);
        std::memcpy(out, m_buffer.data() + m_next, taken);
        m_next += taken;
        out += taken;
        a_size -= taken;
    }
}

void CArchive::WriteObject(const CObject* a_object)
{
    if (a_object == nullptr) {
        *this << S_noObjectTag;
        return;
    }
    const CRuntimeClass& type = *a_object->GetRuntimeClass();
    const std::string_view name = type.m_lpszClassName;
    if (!a_object->IsSerializable() || name.empty() || name.size() > 0xFFFF)
        Refuse(CArchiveException::badClass,
               "CArchive::WriteObject: klasa nie jest szeregowalna: "_cp1250 + Quote(name));

    *this << S_newClassTag << static_cast<std::uint16_t>(type.m_wSchema)
          << static_cast<std::uint16_t>(name.size());
    Write(name.data(), name.size());
    // Storing doesn't change the object; one operation serves both directions, so its type can't say that.
    const_cast<CObject*>(a_object)->Serialize(*this);
}

std::unique_ptr<CObject> CArchive::ReadObject(const CRuntimeClass* a_class)
{
    std::uint16_t tag = 0;
    *this >> tag;
    if (tag == S_noObjectTag)
        return nullptr;
    if (tag != S_newClassTag)
        Refuse(CArchiveException::badIndex, "CArchive::ReadObject: nieznany znacznik obiektu "_cp1250 +
                                                std::to_string(tag) + ", dozwolone: 0 i 65535"_cp1250);
    if (m_depth == S_deepestObject)
        Refuse(CArchiveException::badIndex,
               "CArchive::ReadObject: za dużo poziomów obiektów, dozwolone: "_cp1250 +
                   std::to_string(S_deepestObject));
    const Level level(m_depth);
    return ReadNewObject(a_class);
}

std::unique_ptr<CObject> CArchive::ReadNewObject(const CRuntimeClass* a_class)
{
    std::uint16_t schema = 0;
    std::uint16_t nameLength = 0;
    *this >> schema >> nameLength;
    std::string name(nameLength, '\0');
    Read(name.data(), name.size());

    const CRuntimeClass* const type = CRuntimeClass::FindSerialClass(name);
    if (type == nullptr)
        Refuse(CArchiveException::badClass, "CArchive::ReadObject: nieznana klasa "_cp1250 + Quote(name));
    if (a_class != nullptr && !type->IsDerivedFrom(a_class))
        Refuse(CArchiveException::badClass, "CArchive::ReadObject: klasa "_cp1250 + Quote(name) +
                                                ", oczekiwano: "_cp1250 + Quote(a_class->m_lpszClassName));
    if (schema != type->m_wSchema)
        Refuse(CArchiveException::badSchema, "CArchive::ReadObject: schemat klasy "_cp1250 + Quote(name) +
                                                 " to "_cp1250 + std::to_string(schema) +
                                                 ", oczekiwano: "_cp1250 + std::to_string(type->m_wSchema));

    std::unique_ptr<CObject> object = type->m_pfnCreateObject();
    object->Serialize(*this);
    return object;
}

void AfxWriteStringLength(CArchive& a_archive, std::uint64_t a_length, bool a_wide)
{
    if (a_wide)
        a_archive << S_lengthIn16Bits << S_wideText;
    if (a_length < S_lengthIn16Bits) {
        a_archive << static_cast<std::uint8_t>(a_length);
        return;
    }
    a_archive << S_lengthIn16Bits;
    if (a_length < S_wideText) {
        a_archive << static_cast<std::uint16_t>(a_length);
        return;
    }
    a_archive << S_lengthIn32Bits;
    if (a_length < S_lengthIn64Bits) {
        a_archive << static_cast<std::uint32_t>(a_length);
        return;
    }
    a_archive << S_lengthIn64Bits << a_length;
}

std::uint64_t AfxReadStringLength(CArchive& a_archive, int& a_characterSize)
{
    const std::uint64_t length = ReadLength(a_archive, a_characterSize);
    const std::uint64_t room = a_archive.GetBytesLeft() / static_cast<unsigned int>(a_characterSize);
    if (length > room)
        Refuse(CArchiveException::badIndex, "AfxReadStringLength: długość tekstu "_cp1250 +
                                                std::to_string(length) + ", zmieści się najwyżej "_cp1250 +
                                                std::to_string(room));
    return length;
}
