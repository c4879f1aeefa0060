#pragma once

#include "history_operations/HistoryOperations.h"
#include "platform/FileTools.h"
#include "series/History.h"
#include "series/Record.h"
#include "settings/Settings.h"
#include "support/BlockTools.h"
#include "support/Testing.h"

// What the host that is killed saves, and the test looks for. The contents of each file follow from one number, so that
// a file of mixed or half contents shows.

enum EFile : std::uint8_t { EHistory, EOperations, ESettings, EFileCount };

inline const char* const S_names[] = {"rows.block", "DataOperation.xml", "settings.xml"};

/// False where it failed.
inline bool Save(EFile a_file, const std::filesystem::path& a_folder, std::uint32_t a_number)
{
    const std::filesystem::path path = a_folder / S_names[a_file];
    if (a_file == EHistory) {
        History history(std::set<ESeriesId>{Price, Volume}, EIntervalTick, 1);
        NDateTime time(2024, 1, 2, 9, 0, 0, 0);
        for (std::uint32_t row = 0; row < 200 + a_number % 300; ++row) {
            time.ShiftSec(1);
            history.AddData(Record(time, {{Price, a_number}, {Volume, row}}));
        }
        std::error_code failure;
        return FileTools::ReplaceFile(path, BytesOf(history), failure);
    }
    if (a_file == EOperations) {
        std::string text = std::to_string(a_number) + "\n";
        for (std::uint32_t line = 0; line < 20 + a_number % 50; ++line)
            text += std::to_string(a_number) + ",240102,2,0.5\n";
        HistoryOperations operations;
        const bool isRead = operations.Parse(text);
        operations.Save(path.wstring());
        return isRead;
    }
    Settings settings;
    settings["Number"] = a_number;
    for (std::uint32_t child = 0; child < 50 + a_number % 100; ++child)
        settings["Children"].AddUnnamed()["Value"] = a_number;
    return settings.SaveToFile(path.wstring(), "Root");
}
