#include "history_operations/HistoryOperations.h"

#include "platform/WidePath.h"
#include "support/StoredForm.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace {

HistoryOperations Parsed(std::string_view a_text)
{
    HistoryOperations operations;
    EXPECT_TRUE(operations.Parse(a_text));
    return operations;
}

std::size_t CountOf(const HistoryOperations& a_operations)
{
    return static_cast<std::size_t>(std::distance(a_operations.begin(), a_operations.end()));
}

} // namespace

TEST(HistoryOperationsTest, ARefusedTextLeavesNothingBehind)
{
    const std::vector<std::string> texts = {
        "",
        "\n\n\n",
        "7\n1,2103,2,0.5",
        "7\n1,210315,2",
        "7\n1,210315,2,0.5\n2,,2,0.5",
        "7\n1,210315,2,0.5\n2,2103150,2,0.5\n",
        "7\n1,000000,2,0.5",
        "7\n,,,,",
        // What an operation looks like has to begin on the line after the version, whatever the version says.
        "1,210315,2,0.5\n1,x21031,2,0.5",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        HistoryOperations operations = Parsed("3\n9,200102,7,0.9");
        EXPECT_FALSE(operations.Parse(text));
        EXPECT_EQ(StoredText(operations), StoredText(HistoryOperations()));
    }
}

TEST(HistoryOperationsTest, OneOperationInEveryDress)
{
    const std::string plain = StoredText(Parsed("7\n1,210315,2,0.5"));
    const std::vector<std::string> texts = {
        "7\r\n1,210315,2,0.5\r\n\r\n",        "\n\n7\n1,210315,2,0.5",
        " 7\t\n 1 , 21 03 15,\v2, 0 . 5\f",   "7\n,,,1,210315,2,0.5",
        "7\n1,210315,2,0.5,further,fields,,", "+7\n1x,210315,2.9,0.5x",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StoredText(Parsed(text)), plain);
    }
}

TEST(HistoryOperationsTest, TheFirstLineIsTheVersionWhateverItHolds)
{
    const std::vector<std::pair<std::string, int>> cases = {
        {"-7\n", -7},
        {"1,210315,2,0.5", 1},
        {" \n", 0},
        {"99999999999999999999", std::numeric_limits<int>::max()},
    };
    for (const auto& [text, version] : cases) {
        SCOPED_TRACE(text);
        const HistoryOperations operations = Parsed(text);
        EXPECT_EQ(operations.Version(), version);
        EXPECT_EQ(CountOf(operations), 0U);
    }
}

TEST(HistoryOperationsTest, UnreadableNumbersAreZero)
{
    const std::tuple<std::string, int, int, double> cases[] = {
        {"x,210315,x,x", 0, 0, 0.0},
        {"-5,210315,-2147483648,-0.25", -5, std::numeric_limits<int>::min(), -0.25},
        {"2147483648,210315,99999999999,1e999", 0, 0, 0.0},
        {"+1,210315,,+0.5", 0, 0, 0.0},
        {"1,210315,2,inf", 1, 2, HUGE_VAL},
        {"1,210315,2,0x10", 1, 2, 0.0},
    };
    for (const auto& [line, id, type, factor] : cases) {
        SCOPED_TRACE(line);
        const HistoryOperations operations = Parsed("1\n" + line);
        ASSERT_EQ(CountOf(operations), 1U);
        EXPECT_EQ(operations.begin()->GetId(), id);
        EXPECT_EQ(operations.begin()->GetType(), type);
        EXPECT_EQ(operations.begin()->GetStoredFactor(), factor);
    }
    EXPECT_TRUE(std::isnan(Parsed("1\n1,210315,2,nan").begin()->GetStoredFactor()));
}

TEST(HistoryOperationsTest, FaultsSayWhereTheyAre)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"7\n1,210315,2,0.5\n", {}},
        {"\n", {"0 at 0:0 "}},
        {"\n\n x\n1,210315,2,0.5", {"1 at 3:2 x"}},
        {"7\n,,1,210315,,0.5", {"5 at 2:12 "}},
        {"7\n\n 1 , 21 03 15, a b ,0.5x\n2,2103,2,0.5\n3,x",
         {"5 at 3:16 ab", "6 at 3:21 0.5x", "2 at 4:1 2,2103,2,0.5"}},
        {"7\r\nx,2103 1 x,2,0.5\r\n1,2", {"3 at 2:1 x", "4 at 2:3 21031x", "2 at 3:1 1,2"}},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        std::vector<OperationsFault> faults;
        HistoryOperations operations;
        const bool isTaken = operations.Parse(text, faults);
        std::vector<std::string> shown;
        for (const OperationsFault& fault : faults)
            shown.push_back(std::to_string(fault.expected) + " at " + std::to_string(fault.line) + ':' +
                            std::to_string(fault.column) + ' ' + fault.found);
        EXPECT_EQ(shown, expected);
        const bool isRefused = !faults.empty() && (faults.back().expected == EOperationsLine ||
                                                   faults.back().expected == EOperationsOperation);
        EXPECT_NE(isTaken, isRefused);
    }
}

TEST(HistoryOperationsTest, TheStoredFile)
{
    const TemporaryFolder folder;
    const std::wstring widePath = WidePath::ToWide(folder / "DataOperation.xml");
    const std::string bytes = R"(<?xml version="1.0" encoding="UTF-8"?>
<DataOperation>
    <Version>7</Version>
    <Operations>
        <item>
            <Id>11</Id>
            <CorrectionFactor>0.05</CorrectionFactor>
            <Type>4</Type>
            <Date>
                <DateTime>39995</DateTime>
                <Millisecond>0</Millisecond>
            </Date>
        </item>
    </Operations>
</DataOperation>
)";
    HistoryOperations operations = Parsed("7\n11,090701,4,0.05");
    operations.Save(widePath);
    EXPECT_EQ(folder.Read("DataOperation.xml"), bytes);

    HistoryOperations loaded = Parsed("1\n9,200102,7,0.9\n9,200102,7,0.9");
    EXPECT_TRUE(loaded.Load(widePath));
    EXPECT_EQ(StoredText(loaded), StoredText(operations));
    EXPECT_EQ(loaded.begin()->GetDate(), NDateTime(2009, 7, 1));
}

TEST(HistoryOperationsTest, AFileThatDoesNotLoadChangesNothing)
{
    const TemporaryFolder folder;
    HistoryOperations operations = Parsed("7\n11,090701,4,0.05");
    const std::string before = StoredText(operations);
    EXPECT_FALSE(operations.Load(WidePath::ToWide(folder / "missing.xml")));
    const auto load = [&](const char* a_bytes) {
        return operations.Load(WidePath::ToWide(folder.Write("DataOperation.xml", a_bytes)));
    };
    for (const char* bytes : {"", "<DataOperation><Version>1</Version>", "<Other/>", "7\n1,210315,2,0.5"}) {
        SCOPED_TRACE(bytes);
        EXPECT_FALSE(load(bytes));
        EXPECT_EQ(StoredText(operations), before);
    }
    // Missing values are zeros, as everywhere in stored trees.
    EXPECT_TRUE(load("<DataOperation><Operations><item/></Operations></DataOperation>"));
    EXPECT_EQ(operations.Version(), 0);
    ASSERT_EQ(CountOf(operations), 1U);
    EXPECT_EQ(operations.begin()->GetStoredFactor(), 0.0);
}

TEST(HistoryOperationsTest, AListIsUsableWhereCuttingItDropsNothing)
{
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        std::string text = "5\n";
        for (std::size_t count = random() % 5; count > 0; --count)
            text += std::to_string(random()) + ",21031" + std::to_string(random() % 8) + ",2,0.5\n";
        SCOPED_TRACE(text);
        const HistoryOperations operations = Parsed(text);
        for (unsigned int day = 10; day < 19; ++day) {
            const HistoryOperations usable = operations.PrapareOperationThatCanBeUse(NDateTime(2021, 3, day));
            std::vector<int> left;
            for (const SingleHistoryOperation& operation : operations)
                if (operation.GetDate().GetDay() < day)
                    left.push_back(operation.GetId());
            EXPECT_TRUE(std::equal(usable.begin(), usable.end(), left.begin(), left.end(),
                                   [](const auto& a_kept, int a_id) { return a_kept.GetId() == a_id; }));
            EXPECT_EQ(operations.CanBeUse(NDateTime(2021, 3, day)), left.size() == CountOf(operations));
            EXPECT_EQ(usable.Version(), -5);
            HistoryOperations again = usable;
            again.Update(again);
            EXPECT_EQ(StoredText(again), StoredText(usable));
        }
    }
    EXPECT_EQ(Parsed("-2147483648").PrapareOperationThatCanBeUse(NDateTime()).Version(),
              std::numeric_limits<int>::min());
}
