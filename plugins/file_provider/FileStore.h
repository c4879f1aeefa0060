#pragma once

#include "file_provider/FileStoreHost.h"
#include "file_provider/FileStoreOptions.h"
#include "provider_kit/IMarketStore.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// A folder with files of rows as a store of market data that is played back; docs/file_provider.md describes the layout
/// of the folder, what is kept on the disk, and how a recorded day is played.
///
/// One market clock serves all instruments. It starts at the first opening and goes on while the store is closed. Rows
/// up to its time can be seen, in steps of whole seconds; those of later days never can. Candles and daily rows can all
/// be seen at once.
///
/// A thread of its own reads the files, tells the listener and watches for changed files. Until it has read them the
/// reading operations raise; Restored says that it has. A file that can't be read is left out, with a line in the log.
class FileStore : public IMarketStore {
public:
    explicit FileStore(FileStoreOptions a_options);
    ~FileStore() override;

    /// Before the first Open.
    void SetHost(FileStoreHost a_host);

    void Open(IMarketStoreListener& a_listener) override;
    void Close() override;
    std::vector<StoreInstrument> ReadInstruments() override;
    HistoryOperations ReadOperations(const std::string& a_isin) override;
    std::uint64_t GetRowCount(const std::string& a_isin) override;
    std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time) override;
    History ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) override;
    std::optional<Offers> ReadOffers(const std::string& a_isin) override;

    /// The clock of FileStoreHost::now shows another time. Any thread.
    void ClockMoved();
    /// How many files of rows were read so far, without those whose parts were on the disk. Any thread.
    std::uint64_t GetTextsRead() const;
    /// How long it takes until the instrument's next row can be seen, from the clock's time on. Empty where none
    /// will come. Raises as the reading operations do. Any thread.
    std::optional<std::chrono::steady_clock::duration> GetTimeToNextRow(const std::string& a_isin);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
