#pragma once

#include "file_provider/Catalog.h"
#include "file_provider/FileStoreHost.h"
#include "file_provider/FileStoreOptions.h"

#include <cstdint>
#include <memory>
#include <stop_token>

namespace kalvento::files {

/// Reads the files of a folder and makes the list of what is served of them. One thread.
class CatalogMaker {
public:
    /// Both outlive the maker.
    CatalogMaker(const FileStoreOptions& a_options, const FileStoreHost& a_host)
        : m_options(a_options), m_host(a_host)
    {
        m_cacheHost->sorts = a_options.sort;
        m_cacheHost->storesRows = !a_options.listOnly;
    }

    /// a_before: what was served so far, empty at first. Its files aren't read again unless they changed, and an
    /// instrument keeps its generation as long as no row that was seen has changed. What can't be read is left out
    /// and logged. Raises std::runtime_error once a_stop asks for the end.
    std::shared_ptr<Catalog> Make(FolderContents a_folder, const Catalog& a_before,
                                  const std::stop_token& a_stop);
    /// How many files of rows were read so far, without those whose parts were on the disk. Any thread.
    std::uint64_t GetTextsRead() const { return m_cacheHost->textsRead; }

private:
    void ReadSources(Catalog& a_catalog, const Catalog& a_before, const std::stop_token& a_stop);
    void ChooseDay(Catalog& a_catalog) const;
    void NumberGenerations(Catalog& a_catalog, const Catalog& a_before);

    const FileStoreOptions& m_options;
    const FileStoreHost& m_host;
    const std::shared_ptr<CacheHost> m_cacheHost = std::make_shared<CacheHost>();
    unsigned int m_done = 0;         // files read or given up in all
    std::uint64_t m_generations = 0; // given out so far
};

} // namespace kalvento::files
