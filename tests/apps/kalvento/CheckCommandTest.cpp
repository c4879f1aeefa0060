#include "apps/kalvento/RunToolHere.h"
#include "support/BlockTools.h"
#include "support/Testing.h"
#include "time/NDateTime.h"

using namespace kalvento::tool;

namespace {

NDateTime At(unsigned int a_second, unsigned int a_counter = 0)
{
    return {2024, 1, 2, 9, 0, a_second, a_counter};
}

std::string BlockBytes(EInterval a_interval, unsigned int a_multiplicity, std::vector<NDateTime> a_times,
                       DataSeriesSet::Columns a_columns)
{
    return BytesOf(DataSeriesSet(a_interval, a_multiplicity, std::move(a_times), std::move(a_columns)));
}

} // namespace

TEST(CheckCommandTest, SaysWhatIsWrongWithABlockAndWhere)
{
    const std::vector<NDateTime> rising{At(1), At(1, 1), At(2)};
    const DataSeriesSet::Columns columns{{Price, {1, 2, 3}}, {Volume, {4, 5, 6}}};
    const std::string good = BlockBytes(EIntervalTick, 1, rising, columns);
    std::string badStatus = good;
    // Version and count of columns, two columns of three values, the count of times; the third time's status.
    const std::size_t times = std::size_t{12} + 2 * (12 + 24) + 8;
    badStatus[times + 2 * 24 + 8] = 1;

    const std::tuple<const char*, std::string, int, const char*> cases[] = {
        {"good", good, EExitOk, "good"},
        {"empty ticks", BlockBytes(EIntervalTick, 1, {}, {{Price, {}}}), EExitBadData,
         "rows: there are none"},
        {"end missing", good.substr(0, good.size() - 1), EExitBadData, "ends early, at byte 171"},
        {"middle missing", good.substr(0, 40), EExitBadData, "ends early, at byte 40"},
        {"one byte more", good + "x", EExitBadData, "the block ends at byte 172, the input at 173"},
        {"falling time", BlockBytes(EIntervalTick, 1, {At(1), At(5), At(2)}, columns), EExitBadData,
         "row 3 (byte 140): 2024-01-02 09:00:02 comes after 2024-01-02 09:00:05"},
        {"equal times", BlockBytes(EIntervalTick, 1, {At(1), At(1), At(2)}, columns), EExitBadData,
         "row 2 (byte 116) has the time of the row before"},
        {"invalid time", badStatus, EExitBadData, "row 3 (byte 140): the time is not valid"},
        {"short column", BlockBytes(EIntervalTick, 1, rising, {{Price, {1, 2, 3}}, {Volume, {4}}}),
         EExitBadData, "Ilość danych w seriach jest różna; column volume has 1 values for 3 rows"},
        {"no interval", BlockBytes(EIntervalEmpty, 0, rising, columns), EExitBadData,
         "interval 0 with multiplicity 0"},
        {"candles without open", BlockBytes(EIntervalMinute, 5, rising, columns), EExitBadData,
         "candles need open, high and low"},
        {"ticks with high",
         BlockBytes(EIntervalTick, 1, rising, {{Price, {1, 2, 3}}, {IntervalMax, {1, 2, 3}}}), EExitBadData,
         "ticks hold no open, high, low"},
        {"columns in disorder",
         BlockBytes(EIntervalTick, 1, rising, {{Volume, {1, 2, 3}}, {Price, {1, 2, 3}}}), EExitBadData,
         "series 2 stands behind 3"},
        {"huge count", good.substr(0, 4) + std::string(8, '\xFF') + good.substr(12), EExitBadData, "block"},
    };
    for (const auto& [name, bytes, exitCode, text] : cases) {
        SCOPED_TRACE(name);
        const TemporaryFolder folder;
        const ToolRun run = RunToolHere({"check", folder.Write("rows.block", bytes)});
        EXPECT_EQ(run.exitCode, exitCode) << run.out << run.err;
        EXPECT_NE((run.out + run.err).find(text), std::string::npos) << run.out << run.err;
    }
}

TEST(CheckCommandTest, NoDamageOfABlockEndsTheTool)
{
    const TemporaryFolder folder;
    const std::string good =
        BlockBytes(EIntervalTick, 1, {At(1), At(2)}, {{Price, {1, 2}}, {Volume, {4, 5}}});
    for (std::size_t place = 4; place < good.size(); ++place) {
        std::string bytes = good;
        bytes[place] = static_cast<char>(~bytes[place]);
        const std::string file = folder.Write("rows.block", bytes);
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"check"}, {"show"}, {"candles", "-i", "1y"}}) {
            std::vector<std::string> arguments = command;
            arguments.push_back(file);
            const int exitCode = RunToolHere(arguments).exitCode;
            ASSERT_TRUE(exitCode == EExitOk || exitCode == EExitBadData) << command[0] << place;
        }
        folder.Write("rows.block", good.substr(0, place));
        ASSERT_EQ(RunToolHere({"check", file}).exitCode, EExitBadData) << place;
    }
    const std::string falling = folder.Write(
        "falling.block", BlockBytes(EIntervalTick, 1, {At(2), At(1)}, {{Price, {1, 2}}, {Volume, {4, 5}}}));
    EXPECT_EQ(RunToolHere({"candles", falling, "-i", "1d"}).exitCode, EExitBadData);
}
