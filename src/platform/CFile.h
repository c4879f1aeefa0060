#pragma once

#include "platform/Export.h"

#include <cstddef>
#include <cstdint>

/// A run of bytes with a place in it, as an archive reads and writes it. One thread at a time.
class KALVENTO_API CFile {
public:
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    virtual ~CFile() = default;

    /// Takes up to a_size bytes from the place on and moves the place past them. Fewer only at the end.
    virtual std::size_t Read(void* a_bytes, std::size_t a_size) = 0;
    /// Puts a_size bytes at the place, over what is there, and moves the place past them. All or an exception.
    virtual void Write(const void* a_bytes, std::size_t a_size) = 0;
    /// Bytes in the whole file.
    virtual std::uint64_t GetLength() const = 0;
    /// The place, counted in bytes from the beginning; never above GetLength.
    virtual std::uint64_t GetPosition() const = 0;

protected:
    CFile() = default;
};
