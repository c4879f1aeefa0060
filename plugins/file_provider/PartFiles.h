#pragma once

#include "file_provider/CacheContents.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <utility>

namespace kalvento::files {

/// The files of a folder that hold the parts: "Rows-<generation>-<symbol>-<part>.block". Any thread.
class PartFiles {
public:
    explicit PartFiles(std::filesystem::path a_folder) : m_folder(std::move(a_folder)) {}

    const std::filesystem::path& GetFolder() const { return m_folder; }
    std::filesystem::path PathOf(const CacheContents& a_contents, std::size_t a_symbol,
                                 std::size_t a_part) const;
    /// Null where the file isn't the one that a_contents tell of.
    std::shared_ptr<const History> Read(const CacheContents& a_contents, std::size_t a_symbol,
                                        std::size_t a_part) const;
    /// Those of all generations but this.
    void RemoveOthers(std::uint64_t a_generation) const;

private:
    std::filesystem::path m_folder;
};

} // namespace kalvento::files
