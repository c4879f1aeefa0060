#include "apps/kalvento/RunToolHere.h"

#include "support/Testing.h"

#include <csignal>
#include <future>
#include <streambuf>
#include <unistd.h>

using namespace kalvento::tool;

namespace {

std::vector<std::string> LinesOf(const std::string& a_text)
{
    std::vector<std::string> lines;
    std::istringstream stream(a_text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The candles that a reader of the changes has at the end: `new` adds one, `changed` replaces the last.
std::string Replay(const std::string& a_changes)
{
    std::vector<std::string> candles;
    for (const std::string& line : LinesOf(a_changes)) {
        const auto comma = line.find(',');
        const std::string event = line.substr(0, comma);
        const std::string rest = line.substr(comma + 1);
        if (event == "changed" && candles.size() > 1)
            candles.back() = rest;
        else
            candles.push_back(rest);
    }
    std::string text;
    for (const std::string& candle : candles)
        text += candle + '\n';
    return text;
}

std::string Ticks(const char* a_rows)
{
    const ToolRun run = RunToolHere({"generate", "--rows", a_rows, "--sessions", "2", "--seed", "5"});
    EXPECT_EQ(run.exitCode, EExitOk) << run.err;
    return run.out;
}

std::string CandlesOf(const std::string& a_file, const std::string& a_interval)
{
    const ToolRun run =
        RunToolHere({"candles", a_file, "--interval", a_interval, "--format", "csv", "--quiet"});
    EXPECT_EQ(run.exitCode, EExitOk) << run.err;
    return run.out;
}

/// Keeps what is written and tells when the first byte has come.
class NoticingBuffer final : public std::stringbuf {
public:
    std::future<void> FirstByte() { return m_first.get_future(); }

protected:
    std::streamsize xsputn(const char* a_bytes, std::streamsize a_count) override
    {
        const auto written = std::stringbuf::xsputn(a_bytes, a_count);
        if (!m_told && a_count > 0) {
            m_told = true;
            m_first.set_value();
        }
        return written;
    }

private:
    std::promise<void> m_first;
    bool m_told = false;
};

/// A live run on a thread of its own that has written something, until it is interrupted.
class Follower {
public:
    Follower(const std::string& a_file, const std::string& a_interval)
        : m_thread([=, this] {
              RunTool({"live", a_file, "-i", a_interval, "-f", "csv"}, m_context);
          })
    {
        m_started.wait();
    }
    /// Returns what it has written.
    std::string Interrupt()
    {
        kill(getpid(), SIGINT);
        m_thread.join();
        EXPECT_EQ(m_context.exitCode, EExitOk) << errors.str();
        return m_outBuffer.str();
    }

    NoticingBuffer errors;

private:
    NoticingBuffer m_outBuffer;
    std::future<void> m_started = m_outBuffer.FirstByte();
    std::ostream m_out{&m_outBuffer};
    std::ostream m_err{&errors};
    std::istringstream m_in;
    ToolContext m_context{m_in, m_out, m_err};
    std::thread m_thread;
};

} // namespace

TEST(LiveCommandTest, ReplayedChangesAreTheCandlesOfTheFile)
{
    const TemporaryFolder folder;
    const std::string ticks = Ticks("1500");
    const std::string file = folder.Write("ticks.csv", ticks);
    for (const char* interval : {"1s", "1min", "7min", "1h", "1d", "1w"}) {
        SCOPED_TRACE(interval);
        const std::string candles = CandlesOf(file, interval);
        // All rows are past.
        const ToolRun past = RunToolHere({"live", file, "-i", interval, "--no-follow", "-f", "csv"});
        ASSERT_EQ(past.exitCode, EExitOk) << past.err;
        EXPECT_EQ(Replay(past.out), candles);
        // All rows are live: one change each.
        const ToolRun live = RunToolHere({"live", "-", "-i", interval, "-f", "csv"}, ticks);
        ASSERT_EQ(live.exitCode, EExitOk) << live.err;
        EXPECT_EQ(LinesOf(live.out).size(), 1501U);
        EXPECT_EQ(Replay(live.out), candles);
    }
}

TEST(LiveCommandTest, FollowsWhatIsAppendedInPiecesUntilInterrupted)
{
    const TemporaryFolder folder;
    const std::string ticks = Ticks("2000");
    const std::string whole = folder.Write("whole.csv", ticks);
    const std::size_t start = ticks.size() / 3;
    const std::string grown = folder.Write("grown.csv", ticks.substr(0, start));

    Follower follower(grown, "5min");
    // Pieces end anywhere, also inside of a line.
    for (std::size_t place = start; place < ticks.size(); place += 997)
        folder.Append("grown.csv", ticks.substr(place, 997));
    EXPECT_EQ(Replay(follower.Interrupt()), CandlesOf(whole, "5min"));
}

TEST(LiveCommandTest, ARotationContinuesTheCandle)
{
    const TemporaryFolder folder;
    const std::string header = "time,price,volume\n";
    const std::string first = "2024-01-02 09:00:01,10,1\n2024-01-02 09:00:20,12,2\n";
    const std::string second = "2024-01-02 09:00:40,9,4\n2024-01-02 09:01:00,11,8\n";
    const std::string file = folder.Write("ticks.csv", header + first);

    Follower follower(file, "1min");
    std::future<void> noticed = follower.errors.FirstByte();
    // The new file repeats a row of an earlier second.
    folder.Write("next.csv", header + "2024-01-02 09:00:01,99,100\n" + second);
    std::filesystem::rename(folder.Path("next.csv"), file);
    noticed.wait();
    EXPECT_EQ(Replay(follower.Interrupt()), "time,open,high,low,close,volume\n"
                                            "2024-01-02 09:00:00,10,12,9,9,7\n"
                                            "2024-01-02 09:01:00,11,11,11,11,8\n");
    for (const char* told : {"another file", "1 rows were earlier"})
        EXPECT_NE(follower.errors.str().find(told), std::string::npos) << follower.errors.str();
}
