#include "velo/Log.h"

#include "platform/CodePage.h"
#include "support/LogWatch.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"
#include "support/Threads.h"
#include "velo/LogAllExceptions.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using VeloTools::Log;

class LogFileTest : public testing::Test {
protected:
    LogFileTest() { EXPECT_TRUE(Log::Instance().SetLogFolder(m_folder / "Logs")); }
    ~LogFileTest() override { Log::Instance().SetLogFolder({}); }

    std::vector<std::string> Lines() const
    {
        std::istringstream file(m_folder.Read("Logs/Kalvento.log"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST_F(LogFileTest, NoTextCanPassForALine)
{
    Log::Instance().Write("Place\tof", 7, "a\nb\r\t\\ \x01\x7F\x81 \xBF\xF3\xB3w");
    EXPECT_THAT(Lines(), ElementsAre(EndsWith(
                             "\tPlace\\tof\t7\ta\\nb\\r\\t\\\\ \\x01\\x7F\\x81 \xC5\xBC\xC3\xB3\xC5\x82w")));
}

TEST_F(LogFileTest, LinesOfManyThreadsStayWhole)
{
    constexpr int threads = 8;
    constexpr int lines = 200;
    RunOnThreads(threads, [] {
        for (int line = 0; line < lines; ++line)
            Log::Instance().Write("Writer", line, std::string(50, 'x'));
    });
    const std::vector<std::string> written = Lines();
    EXPECT_EQ(written.size(), std::size_t{threads * lines});
    EXPECT_THAT(written, testing::Each(EndsWith("\t" + std::string(50, 'x'))));
}

TEST(LogTest, UnwritableFileGivesWayToStandardError)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink("/dev/full", folder / "Kalvento.log");
    ASSERT_TRUE(Log::Instance().SetLogFolder(folder.GetPath()));
    testing::internal::CaptureStderr();
    Log::Instance().Write("Place", 1, "not lost");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("\tPlace\t1\tnot lost\n"));

    std::ofstream(folder / "file") << "x";
    EXPECT_FALSE(Log::Instance().SetLogFolder(folder / "file" / "below"));
    EXPECT_TRUE(Log::Instance().SetLogFolder({}));
}

TEST(LogTest, NoFolderIsTakenThatOthersWriteInto)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "open");
    std::filesystem::permissions(folder / "open", std::filesystem::perms::all);
    folder.Write("other", "bytes of another");
    std::filesystem::create_directory(folder / "linked");
    std::filesystem::create_hard_link(folder / "other", folder / "linked" / "Kalvento.log");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Log::Instance().SetLogFolder(folder / "open"));
    EXPECT_FALSE(Log::Instance().SetLogFolder(folder / "linked")) << "a second name for another file";
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(folder.Read("other"), "bytes of another");
}

TEST(LogTest, ASinkMayWriteRaiseRemoveItselfAndAddAnother)
{
    std::vector<std::string> told;
    Log::SinkId first = 0;
    Log::SinkId second = 0;
    first = Log::Instance().AddSink([&](std::string_view, int a_line, std::string_view) {
        told.push_back("first " + std::to_string(a_line));
        Log::Instance().Write("Sink", 9, "it is not told of what it writes itself");
        if (a_line == 2) {
            Log::Instance().RemoveSink(first);
            second = Log::Instance().AddSink([&](std::string_view, int a_later, std::string_view) {
                told.push_back("second " + std::to_string(a_later));
            });
        }
        throw std::runtime_error("dropped");
    });
    for (const int line : {1, 2, 3})
        Log::Instance().Write("Test", line, "text");
    Log::Instance().RemoveSink(second);
    Log::Instance().Write("Test", 4, "text");
    EXPECT_THAT(told, ElementsAre("first 1", "first 2", "second 3"));
}

TEST(LogTest, SinkIsNeverCalledAfterItsRemoval)
{
    std::atomic<bool> stop = false;
    std::thread writer([&stop] {
        while (!stop)
            Log::Instance().Write("Writer", 1, "line");
    });
    testing::internal::CaptureStderr();
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> alive = true;
        std::atomic<bool> late = false;
        const auto id = Log::Instance().AddSink([&](std::string_view, int, std::string_view) {
            if (!alive)
                late = true;
        });
        Log::Instance().RemoveSink(id);
        alive = false;
        EXPECT_FALSE(late);
    }
    stop = true;
    writer.join();
    testing::internal::GetCapturedStderr();
}

namespace {

void LogWhat(const std::function<void()>& a_throw)
{
    try {
        a_throw();
    } catch (...) {
        LogAllExceptions("Test", 1);
    }
}

struct OddType {};

void ThrowNested(int a_depth)
{
    if (a_depth == 0)
        throw OddType();
    try {
        ThrowNested(a_depth - 1);
    } catch (...) {
        std::throw_with_nested(std::runtime_error("level " + std::to_string(a_depth)));
    }
}

} // namespace

TEST(LogAllExceptionsTest, TellsTypeAndText)
{
    const LogWatch listener;
    LogWhat([] { throw std::out_of_range("too far"); });
    LogWhat([] { std::filesystem::create_directory("/proc/ŻÓŁĆ/x"); });
    LogWhat([] { throw std::string("a string"); });
    LogWhat([] { throw "a literal"; });
    LogWhat([] { throw 42; });
    LogWhat([] { throw OddType(); });
    LogAllExceptions("Test", 2);
    EXPECT_THAT(listener.lines,
                ElementsAre(HasSubstr("std::out_of_range: too far"),
                            EndsWith("nie ma takiego pliku ani folderu: /proc/ŻÓŁĆ/x"_cp1250),
                            HasSubstr("a string"), HasSubstr("a literal"), HasSubstr("int: 42"),
                            HasSubstr("OddType"), EndsWith(": Brak wyj\xB9tku w locie")));
}

TEST(LogAllExceptionsTest, UnwindsCausesButNotForEver)
{
    for (const int depth : {2, 1000}) {
        const LogWatch listener;
        LogWhat([depth] { ThrowNested(depth); });
        EXPECT_LT(listener.lines.size(), 50U);
        if (depth == 2) {
            EXPECT_THAT(listener.lines,
                        ElementsAre(HasSubstr(": level 2"), HasSubstr(": level 1"), HasSubstr("OddType")));
        }
    }
}
