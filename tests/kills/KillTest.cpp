#include "TemporaryFolder.h"
#include "history_operations/HistoryOperations.h"
#include "platform/FileTools.h"
#include "series/History.h"
#include "series/Record.h"
#include "settings/Settings.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// A program that saves and is killed: what it reported as saved is there afterwards, whole. The contents of each file follow
// from one number, so that a file of mixed or half contents shows.

namespace {

enum EFile : std::uint8_t { EHistory, EOperations, ESettings, EFileCount };

const char* const S_names[] = {"rows.block", "DataOperation.xml", "settings.xml"};

History MakeHistory(std::uint32_t a_number)
{
    History history(std::set<ESeriesId>{Price, Volume}, EIntervalTick, 1);
    NDateTime time(2024, 1, 2, 9, 0, 0, 0);
    for (std::uint32_t row = 0; row < 200 + a_number % 300; ++row) {
        time.ShiftSec(1);
        history.AddData(Record(time, {{Price, a_number}, {Volume, row}}));
    }
    return history;
}
std::string MakeOperations(std::uint32_t a_number)
{
    std::string text = std::to_string(a_number) + "\n";
    for (std::uint32_t line = 0; line < 20 + a_number % 50; ++line)
        text += std::to_string(a_number) + ",240102,2,0.5\n";
    return text;
}
Settings MakeSettings(std::uint32_t a_number)
{
    Settings settings;
    settings["Number"] = a_number;
    for (std::uint32_t child = 0; child < 50 + a_number % 100; ++child)
        settings["Children"].AddUnnamed()["Value"] = a_number;
    return settings;
}
std::string BytesOf(const History& a_history)
{
    std::ostringstream stream;
    a_history.Write(stream);
    return stream.str();
}

// The child: saves round after round and reports each file once its save has returned. Never ends by itself.
[[noreturn]] void SaveForEver(const std::filesystem::path& a_folder, int a_reports, std::uint32_t a_first)
{
    for (std::uint32_t number = a_first;; ++number) {
        const auto report = [&](EFile a_file) {
            const std::array<std::uint32_t, 2> message = {a_file, number};
            if (write(a_reports, message.data(), sizeof(message)) != sizeof(message))
                _exit(1);
        };
        std::error_code failure;
        if (!FileTools::ReplaceFile(a_folder / S_names[EHistory], BytesOf(MakeHistory(number)), failure))
            _exit(2);
        report(EHistory);
        HistoryOperations operations;
        if (!operations.Parse(MakeOperations(number)))
            _exit(3);
        operations.Save((a_folder / S_names[EOperations]).wstring());
        report(EOperations);
        if (!MakeSettings(number).SaveToFile((a_folder / S_names[ESettings]).wstring(), "Root"))
            _exit(4);
        report(ESettings);
    }
}

// The number whose contents a file holds, whole; 0 where it isn't there.
std::uint32_t NumberIn(const std::filesystem::path& a_folder, EFile a_file)
{
    const std::filesystem::path path = a_folder / S_names[a_file];
    if (!std::filesystem::exists(path))
        return 0;
    std::uint32_t number = 0;
    if (a_file == EHistory) {
        std::ifstream stream(path, std::ios::binary);
        const History history(stream);
        if (history.IsValid() && !history.IsEmpty())
            number = static_cast<std::uint32_t>(history.find(Price)->second.front());
        EXPECT_EQ(BytesOf(history), BytesOf(MakeHistory(number)));
    } else if (a_file == EOperations) {
        HistoryOperations operations;
        EXPECT_TRUE(operations.Load(path.wstring()));
        number = static_cast<std::uint32_t>(operations.Version());
        EXPECT_EQ(std::distance(operations.begin(), operations.end()), 20 + number % 50);
        for (const auto& operation : operations)
            EXPECT_EQ(operation.GetId(), static_cast<int>(number));
    } else {
        Settings settings;
        EXPECT_TRUE(settings.LoadFromFile(path.wstring(), "Root"));
        number = static_cast<const Settings&>(settings)["Number"];
        EXPECT_EQ(settings.ConvertToString(), MakeSettings(number).ConvertToString());
    }
    return number;
}

} // namespace

TEST(KillTest, WhatWasReportedSavedSurvivesTwoHundredKills)
{
    const TemporaryFolder folder;
    std::mt19937 random(20240102);
    std::array<std::uint32_t, EFileCount> reported = {};
    std::uint32_t next = 1;
    for (int kill = 0; kill < 200; ++kill) {
        SCOPED_TRACE(kill);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(ends[0]);
            SaveForEver(folder.GetPath(), ends[1], next);
        }
        close(ends[1]);
        // Random moments, from the first instructions to some rounds later.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "a save failed: " << status;
        std::array<std::uint32_t, 2> message;
        while (read(ends[0], message.data(), sizeof(message)) == sizeof(message))
            reported[message[0]] = message[1];
        close(ends[0]);
        for (const EFile file : {EHistory, EOperations, ESettings}) {
            SCOPED_TRACE(S_names[file]);
            const std::uint32_t found = NumberIn(folder.GetPath(), file);
            EXPECT_GE(found, reported[file]);
            next = std::max(next, found + 1);
        }
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_GT(reported[ESettings], 0U);
}
