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

    NoticingBuffer buffer;
    std::future<void> started = buffer.FirstByte();
    std::ostream out(&buffer);
    std::istringstream in;
    std::ostringstream err;
    ToolContext context{in, out, err};
    std::thread follower([&] { RunTool({"live", grown, "-i", "5min", "-f", "csv"}, context); });
    started.wait();
    // Pieces end anywhere, also inside of a line.
    for (std::size_t place = start; place < ticks.size(); place += 997)
        folder.Append("grown.csv", ticks.substr(place, 997));
    kill(getpid(), SIGINT);
    follower.join();

    EXPECT_EQ(context.exitCode, EExitOk) << err.str();
    EXPECT_EQ(Replay(buffer.str()), CandlesOf(whole, "5min"));
}

TEST(LiveCommandTest, ARotationContinuesTheCandle)
{
    const TemporaryFolder folder;
    const std::string header = "time,price,volume\n";
    const std::string first = "2024-01-02 09:00:01,10,1\n2024-01-02 09:00:20,12,2\n";
    const std::string second = "2024-01-02 09:00:40,9,4\n2024-01-02 09:01:00,11,8\n";
    const std::string file = folder.Write("ticks.csv", header + first);

    NoticingBuffer outBuffer;
    NoticingBuffer errBuffer;
    std::future<void> started = outBuffer.FirstByte();
    std::future<void> noticed = errBuffer.FirstByte();
    std::ostream out(&outBuffer);
    std::ostream err(&errBuffer);
    std::istringstream in;
    ToolContext context{in, out, err};
    std::thread follower([&] { RunTool({"live", file, "-i", "1min", "-f", "csv"}, context); });
    started.wait();
    // The new file repeats a row of an earlier second.
    folder.Write("next.csv", header + "2024-01-02 09:00:01,99,100\n" + second);
    std::filesystem::rename(folder.Path("next.csv"), file);
    noticed.wait();
    kill(getpid(), SIGINT);
    follower.join();

    EXPECT_EQ(context.exitCode, EExitOk);
    EXPECT_NE(errBuffer.str().find("another file"), std::string::npos) << errBuffer.str();
    EXPECT_NE(errBuffer.str().find("1 rows were earlier"), std::string::npos) << errBuffer.str();
    EXPECT_EQ(Replay(outBuffer.str()), "time,open,high,low,close,volume\n"
                                       "2024-01-02 09:00:00,10,12,9,9,7\n"
                                       "2024-01-02 09:01:00,11,11,11,11,8\n");
}
