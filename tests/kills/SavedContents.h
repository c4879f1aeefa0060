#pragma once

#include "history_operations/HistoryOperations.h"
#include "series/History.h"
#include "series/Record.h"
#include "settings/Settings.h"
#include "support/Testing.h"

// What the host that is killed saves, and the test looks for. The contents of each file follow from one number, so that
// a file of mixed or half contents shows.

enum EFile : std::uint8_t { EHistory, EOperations, ESettings, EFileCount };

inline const char* const S_names[] = {"rows.block", "DataOperation.xml", "settings.xml"};

inline History MakeHistory(std::uint32_t a_number)
{
    History history(std::set<ESeriesId>{Price, Volume}, EIntervalTick, 1);
    NDateTime time(2024, 1, 2, 9, 0, 0, 0);
    for (std::uint32_t row = 0; row < 200 + a_number % 300; ++row) {
        time.ShiftSec(1);
        history.AddData(Record(time, {{Price, a_number}, {Volume, row}}));
    }
    return history;
}
inline std::string MakeOperations(std::uint32_t a_number)
{
    std::string text = std::to_string(a_number) + "\n";
    for (std::uint32_t line = 0; line < 20 + a_number % 50; ++line)
        text += std::to_string(a_number) + ",240102,2,0.5\n";
    return text;
}
inline Settings MakeSettings(std::uint32_t a_number)
{
    Settings settings;
    settings["Number"] = a_number;
    for (std::uint32_t child = 0; child < 50 + a_number % 100; ++child)
        settings["Children"].AddUnnamed()["Value"] = a_number;
    return settings;
}
inline std::string BytesOf(const History& a_history)
{
    std::ostringstream stream;
    a_history.Write(stream);
    return stream.str();
}
