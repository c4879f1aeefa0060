#pragma once

#include "file_provider/DayRows.h"
#include "file_provider/RowCache.h"
#include "file_provider/SourceFolder.h"
#include "file_provider/StoreLog.h"
#include "platform/CodePage.h"
#include "provider_kit/IMarketStore.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kalvento::files {

/// All that is served of a folder, made anew when files change.
struct Catalog {
    /// a_fault: UTF-8.
    void LeaveOut(int a_line, const std::string& a_fault)
    {
        WriteLog(a_line, a_fault);
        faults.push_back(CodePage::Utf8ToWide(a_fault));
    }

    /// Where the data of an instrument are, and how much of it can be seen now.
    struct Place {
        std::shared_ptr<RowCache> cache;
        std::size_t symbol = 0;
        std::uint64_t visible = 0;
        std::shared_ptr<RowCache> book; ///< Null: none.
        std::uint64_t visibleBook = 0;
        std::optional<std::filesystem::path> operations;
    };

    struct Instrument {
        StoreInstrument info;
        Place place;
        DayRows day;     ///< Of a live one.
        DayRows bookDay; ///< Of a book.
    };

    FolderContents folder;
    std::map<std::filesystem::path, std::shared_ptr<RowCache>> caches; ///< Those that could be read.
    std::map<std::string, Instrument> instruments;
    std::optional<std::int64_t> day;   ///< The one that is played; empty where nothing is live.
    std::vector<std::int64_t> seconds; ///< Of the day, at which there is something new.
    std::vector<std::wstring> faults;  ///< What was left out and why, for the user; the log has it, too.
    bool keepsRows = true;             ///< Rows that were seen are unchanged; new ones follow them.
};

} // namespace kalvento::files
