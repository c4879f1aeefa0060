#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <cstddef>
#include <cstdint>
#include <system_error>

namespace kalvento::internal {

/// Room on the disk for what doesn't fit into memory: a file without a name in the system's folder for such files
/// (TMPDIR, else /var/tmp, else /tmp), which nobody else can open and which the system clears away whatever happens to
/// the process. Operations raise std::system_error, whose text names the folder. One thread at a time.
class KALVENTO_API TemporaryFile {
public:
    TemporaryFile();

    /// Adds bytes at the end.
    void Append(const void* a_bytes, std::size_t a_size);
    /// Exactly a_size bytes from that place on, which were appended before.
    void ReadAt(std::uint64_t a_place, void* a_bytes, std::size_t a_size) const;
    std::uint64_t GetSize() const { return m_size; }

private:
    UniqueFd m_file;
    std::uint64_t m_size = 0;
};

} // namespace kalvento::internal
