#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kalvento::internal {

/// A small file that tells others of a process as long as it lives: held by a lock, which the system lets go whatever
/// ends the process. What a dead process has left in it can be read by the next. One thread at a time.
class KALVENTO_API HeldFile {
public:
    static constexpr std::size_t S_mostBytes = 65536;

    /// A new, empty file in that folder, with a name of its own that ends in a_extension; readable for the user only.
    static std::optional<HeldFile> Make(const std::filesystem::path& a_folder, std::string_view a_extension);
    /// One that nobody holds any more. Empty where somebody does, and for what is no regular file of the user's.
    static std::optional<HeldFile> Take(const std::filesystem::path& a_path);

    HeldFile(HeldFile&&) noexcept = default;
    HeldFile& operator=(HeldFile&&) noexcept = default;
    /// Lets go; the file stays.
    ~HeldFile() = default;

    const std::filesystem::path& GetPath() const { return m_path; }
    /// Empty where it can't be read or is larger than S_mostBytes.
    std::string Read() const;
    /// Replaces what is in it; a crash meanwhile leaves it empty or whole. False where the system refuses.
    bool Write(std::string_view a_bytes) const;
    void Remove();

private:
    HeldFile(std::filesystem::path a_path, UniqueFd a_file);
    bool Hold() const;

    std::filesystem::path m_path;
    UniqueFd m_file;
};

} // namespace kalvento::internal
