#pragma once

#include "series/History.h"

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>

namespace kalvento::files {

/// The blocks read last, so that neighbouring rows don't cost a file each. Safe from any thread.
class BlockShelf {
public:
    /// a_mostRows: of all blocks together; the block added last stays even if it alone has more.
    explicit BlockShelf(std::uint64_t a_mostRows) : m_mostRows(a_mostRows) {}

    /// Null where it isn't there, or no longer. a_checksum: of the file's bytes, since another file may have taken its
    /// place under the same name.
    std::shared_ptr<const History> Find(const std::filesystem::path& a_path, std::uint64_t a_checksum)
    {
        const std::lock_guard lock(m_mutex);
        for (auto place = m_blocks.begin(); place != m_blocks.end(); ++place) {
            if (place->path == a_path && place->checksum == a_checksum) {
                m_blocks.splice(m_blocks.begin(), m_blocks, place);
                return place->block;
            }
        }
        return nullptr;
    }
    void Put(const std::filesystem::path& a_path, std::uint64_t a_checksum,
             std::shared_ptr<const History> a_block)
    {
        const std::lock_guard lock(m_mutex);
        m_rows += a_block->GetRecordsCount();
        m_blocks.push_front({a_path, a_checksum, std::move(a_block)});
        while (m_rows > m_mostRows && m_blocks.size() > 1) {
            m_rows -= m_blocks.back().block->GetRecordsCount();
            m_blocks.pop_back();
        }
    }

private:
    struct Entry {
        std::filesystem::path path;
        std::uint64_t checksum;
        std::shared_ptr<const History> block;
    };

    const std::uint64_t m_mostRows;
    std::mutex m_mutex;
    std::list<Entry> m_blocks; // the last one used in front
    std::uint64_t m_rows = 0;
};

} // namespace kalvento::files
