#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

struct stat;

namespace kalvento::internal {

/// A file that takes the place of another whole or not at all: a kill, a full disk or a power cut at any moment leaves
/// the old or the new one. Rights and, where permitted, owner are those of the old file; other hard links keep the old
/// bytes. The new bytes wait in a file without a name, which the system clears away; where the file system has none,
/// and for the moment of the exchange, in a file ".kalvento-<process>-<number>.tmp" of the same folder. What a killed
/// process left of those, another removes when it first replaces a file of that folder. Destroyed before it took its place, it leaves nothing. One thread at a time; any number of them
/// for one path, of which the last one stays. Operations return the error, empty where they succeeded; call none after
/// one failed.
class KALVENTO_API FileReplacement {
public:
    /// Whose path it is.
    enum EPath : std::uint8_t {
        /// The program's: a symbolic link, which anybody may have laid there, is replaced and not followed. Anything
        /// else that isn't a regular file is refused with not_supported.
        EPathOwn,
        /// A user's, who means what it leads to: symbolic links stay, and what isn't a regular file, such as a device
        /// or a pipe, is written as it is, at once.
        EPathTyped
    };

    FileReplacement() = default;
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    /// Call it once, before all else.
    std::error_code Open(const std::filesystem::path& a_path, EPath a_whose);
    std::error_code Write(std::string_view a_bytes);
    /// Brings what was written to the disk.
    std::error_code Flush();
    /// After Flush. Without an error the new file is there, even after a power cut.
    std::error_code TakePlace();

private:
    template<class Attempt>
    bool TakeName(const Attempt& a_attempt);
    bool TakeRightsOf(const struct stat& a_old) const;

    std::filesystem::path m_target; // empty: written as it is
    std::filesystem::path m_path;   // of the waiting file; empty as long as it has no name
    UniqueFd m_file;
};

} // namespace kalvento::internal
