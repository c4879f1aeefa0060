#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace kalvento::internal {

/// A file of lines that several processes of one user append to, and that makes way for a fresh one when it is full:
/// `name.ext` becomes `name.1.ext`, that one `name.2.ext`, and the oldest goes. Nothing that anybody has written is cut
/// off: a line that comes while another process renames goes into the old file or the new one. One thread at a time.
class KALVENTO_API RotatingFile {
public:
    /// Full is a file that would grow beyond a_mostBytes; a_older files are kept beside the one that is written.
    RotatingFile(std::filesystem::path a_path, std::uint64_t a_mostBytes, std::size_t a_older);

    /// Opens the file, which it makes where there is none. Refused is another user's file, or one with a second name,
    /// and what another user's link leads to. A device or a pipe is written as it is. Empty where it succeeded, here and below.
    std::error_code Open();
    /// Appends a line, its end included, in one go.
    std::error_code Write(std::string_view a_line);

private:
    std::filesystem::path NameOf(std::size_t a_age) const;
    bool IsStillThere() const;
    std::error_code MakeWay();

    const std::filesystem::path m_path;
    const std::uint64_t m_mostBytes;
    const std::size_t m_older;
    UniqueFd m_file;
};

} // namespace kalvento::internal
