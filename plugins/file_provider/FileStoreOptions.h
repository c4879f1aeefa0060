#pragma once

#include <filesystem>
#include <string>

/// How a folder is played back.
struct FileStoreOptions {
    std::filesystem::path folder; ///< Empty: none was chosen; the store is then open and empty.
    std::string
        day; ///< The day that is played, as 2024-08-08. Empty: the last on which any live instrument has rows.
    double speed =
        60.0;          ///< Times real time; 0: the whole day is there at once. Below zero or no number: as 0.
    std::string start; ///< Time of day at which playing begins, as 09:00. Empty: at the first row of the day.
    bool sort = false; ///< Texts that aren't in the order of their times are sorted instead of left out.
    bool listOnly =
        false; ///< Only the list is asked for: no rows are stored on the disk, and none can be read.
};
