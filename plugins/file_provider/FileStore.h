#pragma once

#include "provider_kit/IMarketStore.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// How a folder is played back.
struct FileStoreOptions {
    std::filesystem::path folder; ///< Empty: none was chosen; the store is then open and empty.
    std::string
        day; ///< The day that is played, as 2024-08-08. Empty: the last on which any live instrument has rows.
    double speed =
        60.0;          ///< Times real time; 0: the whole day is there at once. Below zero or no number: as 0.
    std::string start; ///< Time of day at which playing begins, as 09:00. Empty: at the first row of the day.
};

/// What a store asks of those around it. Absent functions are as if they did nothing; folderOf must be there.
struct FileStoreHost {
    /// Folder of the stored history for a name, created on the way. Any thread.
    std::function<std::wstring(const std::string& a_name)> folderOf;
    /// So many files are to be read through. On the store's thread.
    std::function<void(unsigned int a_count)> addToDo;
    /// So many of all announced ones are done. On the store's thread.
    std::function<void(unsigned int a_count)> setDone;
    /// The clock. Empty: the steady clock of the machine. A test's clock stands still until FileStore::ClockMoved.
    std::function<std::chrono::steady_clock::time_point()> now;
};

/// A folder with files of rows as a store of market data that is played back; docs/file_provider.md tells the layout of
/// the folder, what is kept on the disk, and how a recorded day goes.
///
/// One market clock goes for all instruments. It starts at the first opening and goes on while the store is closed.
/// Rows at or before it can be seen, in steps of whole seconds; those of later days never. Candles and daily rows are
/// all seen at once.
///
/// A thread of its own reads the files, tells the listener and looks after changed files. Until it has read them the
/// reading operations raise; Restored tells the end of it. A file that can't be read is left out, with a line in the
/// log.
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
    /// How many files of rows were read through, and not taken from the disk, so far. Any thread.
    std::uint64_t GetTextsRead() const;
    /// How long it takes until the instrument's next row can be seen, counted from what the clock shows now. Empty
    /// where none will come. Raises as the reading operations do. Any thread.
    std::optional<std::chrono::steady_clock::duration> GetTimeToNextRow(const std::string& a_isin);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
