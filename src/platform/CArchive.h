#pragma once

#include "platform/CFile.h"
#include "platform/CObject.h"
#include "platform/Export.h"

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kalvento::internal {

/// What an archive holds as is: numbers whose width is the same on every machine.
template<class Type>
concept ArchiveNumber = std::same_as<Type, std::int8_t> || std::same_as<Type, std::uint8_t> ||
    std::same_as<Type, std::int16_t> || std::same_as<Type, std::uint16_t> ||
    std::same_as<Type, std::int32_t> || std::same_as<Type, std::uint32_t> || std::same_as<Type, long long> ||
    std::same_as<Type, unsigned long long> || std::same_as<Type, std::int64_t> ||
    std::same_as<Type, std::uint64_t> || std::same_as<Type, float> || std::same_as<Type, double>;

} // namespace kalvento::internal

/// A stream of values over a file, for one direction: numbers little-endian without padding, and objects by the name of
/// their class. Bytes from outside are never trusted: missing ones raise CArchiveException, and nothing is allocated
/// for a length that the rest of the file can't hold.
///
/// An object's record: tag 0xFFFF, schema, length of the class name (16 bits each), the name, then the fields. No
/// object is the tag 0x0000 alone.
///
/// One thread at a time. The file outlives the archive.
class KALVENTO_API CArchive {
public:
    enum Mode : std::uint32_t { store = 0, load = 1 };
    /// Objects may hold objects this many levels deep; deeper ones raise badIndex on loading, since bytes could
    /// otherwise ask for any depth of calls.
    static constexpr unsigned int S_deepestObject = 1000;

    /// a_bufferSize: bytes gathered between two calls of the file, > 0; below that 4096 are taken.
    CArchive(CFile* a_file, Mode a_mode, int a_bufferSize = 4096);
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;
    /// Closes; what fails here is logged nowhere, so call Close where it matters.
    ~CArchive();

    bool IsLoading() const { return m_mode == load; }
    bool IsStoring() const { return m_mode == store; }

    /// Hands gathered bytes to the file. Nothing may be read or written afterwards. A second call does nothing.
    void Close();

    /// Raises readOnly on an archive that loads, genericException on a closed one.
    void Write(const void* a_bytes, std::size_t a_size);
    /// Exactly a_size bytes; endOfFile, with nothing taken, where fewer are left. Raises writeOnly on an archive that
    /// stores, genericException on a closed one.
    void Read(void* a_bytes, std::size_t a_size);
    /// Bytes that can still be read. Raises as Read does.
    std::uint64_t GetBytesLeft() const;

    template<kalvento::internal::ArchiveNumber Number>
    CArchive& operator<<(Number a_value)
    {
        static_assert(std::endian::native == std::endian::little,
                      "The bytes of an archive are little-endian");
        Write(&a_value, sizeof a_value);
        return *this;
    }
    /// The argument keeps its value where this raises.
    template<kalvento::internal::ArchiveNumber Number>
    CArchive& operator>>(Number& a_value)
    {
        Read(&a_value, sizeof a_value);
        return *this;
    }

    /// Writes the record of the object, or the tag of no object for null. A class that isn't serial raises badClass.
    void WriteObject(const CObject* a_object);
    /// An object of that class or a derived one, any class where a_class is null. Null where no object was written.
    /// What is malformed, unknown, of another schema or of another class raises, and what the fields raise comes
    /// through.
    std::unique_ptr<CObject> ReadObject(const CRuntimeClass* a_class = nullptr);

private:
    void CheckDirection(Mode a_mode) const;
    void Flush();
    std::unique_ptr<CObject> ReadNewObject(const CRuntimeClass* a_class);

    CFile* m_file; // null once closed
    Mode m_mode;
    std::vector<std::byte> m_buffer; // storing: gathered bytes; loading: bytes taken from the file
    std::size_t m_bufferSize;
    std::size_t m_next = 0;   // loading: first byte of the buffer that was not read yet
    unsigned int m_depth = 0; // objects that are being loaded
};

/// Writes the length of a text in the platform's own form, in characters of one byte, or in 16-bit units with a_wide.
/// Wide: FF FE FF first. Then one byte below 255; else FF and 16 bits below 0xFFFE; else FF FFFF and 32 bits below
/// 0xFFFFFFFF; else FF FFFF FFFFFFFF and 64 bits.
/// Source: the MFC reference, "AfxWriteStringLength".
KALVENTO_API void AfxWriteStringLength(CArchive& a_archive, std::uint64_t a_length, bool a_wide);
/// Reads that form. a_characterSize becomes 1 or 2. Raises badIndex, before anything is allocated for it, where the
/// rest of the archive can't hold a text of that length.
KALVENTO_API std::uint64_t AfxReadStringLength(CArchive& a_archive, int& a_characterSize);
