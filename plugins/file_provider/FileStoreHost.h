#pragma once

#include <chrono>
#include <functional>
#include <string>

/// What a store asks of its surroundings. A missing function does nothing; folderOf is required.
struct FileStoreHost {
    /// Folder of the stored history for a name, created on the way. Any thread.
    std::function<std::wstring(const std::string& a_name)> folderOf;
    /// So many files are to be read. On the store's thread.
    std::function<void(unsigned int a_count)> addToDo;
    /// So many of all announced ones are done. On the store's thread.
    std::function<void(unsigned int a_count)> setDone;
    /// The clock. Empty: the steady clock of the machine. A test's clock stands still until FileStore::ClockMoved.
    std::function<std::chrono::steady_clock::time_point()> now;
};
