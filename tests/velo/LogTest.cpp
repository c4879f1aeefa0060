#include "velo/Log.h"

#include "platform/CodePage.h"
#include "support/LogWatch.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"
#include "velo/LogAllExceptions.h"

#include <gmock/gmock.h>

#include <latch>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using VeloTools::Log;

std::vector<std::string> LinesOf(const std::filesystem::path& a_path)
{
    std::ifstream file(a_path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

class LogFileTest : public testing::Test {
protected:
    LogFileTest() { EXPECT_TRUE(Log::Instance().SetLogFolder(m_folder / "Logs")); }
    ~LogFileTest() override { Log::Instance().SetLogFolder({}); }

    std::vector<std::string> Lines() const { return LinesOf(m_folder / "Logs" / "Kalvento.log"); }

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
    std::latch start(threads);
    std::vector<std::thread> writers;
    for (int writer = 0; writer < threads; ++writer) {
        writers.emplace_back([&start] {
            start.arrive_and_wait();
            for (int line = 0; line < lines; ++line)
                Log::Instance().Write("Writer", line, std::string(50, 'x'));
        });
    }
    for (std::thread& writer : writers)
        writer.join();
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

TEST(LogTest, SinkThatWritesIsNotCalledAgain)
{
    int calls = 0;
    const auto id = Log::Instance().AddSink([&calls](std::string_view, int, std::string_view) {
        ++calls;
        Log::Instance().Write("Sink", 1, "from the sink");
        throw std::runtime_error("dropped");
    });
    Log::Instance().Write("Test", 1, "first");
    Log::Instance().Write("Test", 2, "second");
    Log::Instance().RemoveSink(id);
    Log::Instance().Write("Test", 3, "third");
    EXPECT_EQ(calls, 2);
}

TEST(LogTest, SinkMayRemoveItselfAndAddAnother)
{
    int first = 0;
    int second = 0;
    Log::SinkId firstId = 0;
    Log::SinkId secondId = 0;
    firstId = Log::Instance().AddSink([&](std::string_view, int, std::string_view) {
        ++first;
        Log::Instance().RemoveSink(firstId);
        secondId = Log::Instance().AddSink([&](std::string_view, int, std::string_view) { ++second; });
    });
    Log::Instance().Write("Test", 1, "a");
    Log::Instance().Write("Test", 2, "b");
    Log::Instance().RemoveSink(secondId);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
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

} // namespace

TEST(LogAllExceptionsTest, TellsTypeAndText)
{
    const LogWatch listener;
    LogWhat([] { throw std::out_of_range("too far"); });
    LogWhat([] { throw std::string("a string"); });
    LogWhat([] { throw "a literal"; });
    LogWhat([] { throw 42; });
    LogWhat([] { throw OddType(); });
    LogAllExceptions("Test", 2);
    EXPECT_THAT(listener.lines, ElementsAre(HasSubstr("std::out_of_range: too far"), HasSubstr("a string"),
                                            HasSubstr("a literal"), HasSubstr("int: 42"),
                                            HasSubstr("OddType"), EndsWith(": Brak wyj\xB9tku w locie")));
}

TEST(LogAllExceptionsTest, UnwindsCausesButNotForEver)
{
    for (const int depth : {2, 1000}) {
        std::exception_ptr last = std::make_exception_ptr(OddType());
        for (int level = 0; level < depth; ++level) {
            try {
                try {
                    std::rethrow_exception(last);
                } catch (...) {
                    std::throw_with_nested(std::runtime_error("level " + std::to_string(level)));
                }
            } catch (...) {
                last = std::current_exception();
            }
        }
        const LogWatch listener;
        LogWhat([&last] { std::rethrow_exception(last); });
        EXPECT_LT(listener.lines.size(), 50U);
        if (depth == 2) {
            EXPECT_THAT(listener.lines,
                        ElementsAre(HasSubstr(": level 1"), HasSubstr(": level 0"), HasSubstr("OddType")));
        }
    }
}
