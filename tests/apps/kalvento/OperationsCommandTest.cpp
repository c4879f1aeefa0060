#include "apps/kalvento/RunToolHere.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const std::string S_list = "7\n11,090630,4,0.05\n12,140606,2,0.14285714285714285\n-3,500101,7,1e-300\n";

} // namespace

TEST(OperationsCommandTest, ShowsWhatEachOperationDoes)
{
    const ToolRun run = RunToolHere({"operations", "-"}, S_list);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_THAT(run.out, HasSubstr("text form, version 7, 3 operations\n"));
    EXPECT_THAT(run.out, HasSubstr("11  2009-06-30     4                 0.05 "));
    EXPECT_THAT(run.out, HasSubstr(" 20       0.05\n"));
}

TEST(OperationsCommandTest, FormsTurnIntoEachOther)
{
    const TemporaryFolder folder;
    const std::string text = folder.Write("list.txt", "\xEF\xBB\xBF 7\r\n\r\n" + S_list.substr(2));
    const std::string xml = folder.Path("DataOperation.xml");
    EXPECT_EQ(RunToolHere({"operations", text, "--format", "xml", "-o", xml}).exitCode, 0);
    EXPECT_EQ(RunToolHere({"operations", xml, "--format", "text"}).out, S_list);
    const ToolRun run = RunToolHere({"operations", "-", "-f", "xml"}, folder.Read("DataOperation.xml"));
    EXPECT_EQ(run.out, folder.Read("DataOperation.xml"));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(folder.CountFiles(), 2U);
}

TEST(OperationsCommandTest, NamesWhatNobodyCanHaveMeant)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"x\n1,210301,2,0.5", "line 1: version \"x\", expected"},
        {"7\n\n\n 1 x,210301,2,0.5", "line 4: identifier \"1x\", expected"},
        {"7\n1,2103x1,2,0.5", "line 2: date \"2103x1\", expected"},
        {"7\n,1,210301,,0.5", "line 2: type \"\", expected"},
        {"7\n1,210301,2,0,5", "operation 1: factor 0, expected one above 0"},
        {"7\n1,210301,2,0.5.5", "line 2: factor \"0.5.5\", expected"},
        {"7\n1,210301,2,-0.5", "operation 1: factor -0.5, expected one above 0"},
        {"7\n1,210301,4,inf", "operation 1: factor inf, expected one above 0"},
        {"7\n1,210230,2,0.5", "operation 1: its date is in no calendar"},
        {"7\n1,210301,2,0.5\n2,210301,2,0.5\n1,210302,2,0.5", "operation 3: identifier 1 was given before"},
    };
    for (const auto& [text, oddity] : cases) {
        SCOPED_TRACE(text);
        const ToolRun run = RunToolHere({"operations", "-"}, text);
        EXPECT_EQ(run.exitCode, EExitBadData);
        EXPECT_THAT(run.err, HasSubstr(oddity));
        EXPECT_THAT(run.out, HasSubstr("text form, version"));
    }
}

TEST(OperationsCommandTest, RefusesWithThePlace)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "standard input: holds no line; expected the version"},
        {"\n\n", "holds no line"},
        {"7\n1,210301,2,0.5\n\n2,2103,2,0.5\n3",
         "standard input:4:1: found \"2,2103,2,0.5\", expected id,date,type,factor"},
        {"7\n1,210301,2", "standard input:2:1: found"},
        {"7\n,,,,\n", "standard input:2:1: found \",,,,\""},
        {"\r\n7\n1,210301,2,0.5", "standard input:2:1: found \"7\""},
        {"<Other/>", "expected an XML file with the root \"DataOperation\"; wiersz 1, kolumna 2"},
        {" <DataOperation>", "expected an XML file"},
    };
    for (const auto& [text, message] : cases) {
        SCOPED_TRACE(text);
        const ToolRun run = RunToolHere({"operations", "-"}, text);
        EXPECT_EQ(run.exitCode, EExitBadData);
        EXPECT_THAT(run.err, HasSubstr(message));
        EXPECT_THAT(run.out, IsEmpty());
    }
    EXPECT_EQ(RunToolHere({"operations", "/nowhere/list.txt"}).exitCode, EExitNoInput);
}

TEST(OperationsCommandTest, TimesThatTheTextFormLacksAreRefused)
{
    const TemporaryFolder folder;
    const std::string xml =
        "<DataOperation><Operations><item><CorrectionFactor>0.5</CorrectionFactor><Date><DateTime>"
        "44256</DateTime></Date></item><item><Id>2</Id><CorrectionFactor>0.5</CorrectionFactor>"
        "<Date><DateTime>44256.5</DateTime></Date></item></Operations></DataOperation>";
    const ToolRun run = RunToolHere({"operations", "-", "-f", "text", "-o", folder.Path("list.txt")}, xml);
    EXPECT_EQ(run.exitCode, EExitBadData);
    EXPECT_THAT(run.err, HasSubstr("operation 2: the text form holds midnights"));
    EXPECT_EQ(folder.CountFiles(), 0U);
    EXPECT_THAT(RunToolHere({"operations", "-"}, xml).out, HasSubstr("2  2021-03-01 12:00:00 "));
}
