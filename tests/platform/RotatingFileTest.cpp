#include "platform/RotatingFile.h"

#include "support/TemporaryFolder.h"
#include "support/Testing.h"

using kalvento::internal::RotatingFile;

namespace {

// The lines of all files, the oldest first.
std::string AllLines(const TemporaryFolder& a_folder)
{
    std::string lines;
    for (const char* const name : {"a.3.log", "a.2.log", "a.1.log", "a.log"})
        lines += a_folder.Read(name);
    return lines;
}

} // namespace

// As two processes do.
TEST(RotatingFileTest, TwoWritersLoseNoLine)
{
    const TemporaryFolder folder;
    RotatingFile first(folder / "a.log", 20, 3);
    RotatingFile second(folder / "a.log", 20, 3);
    ASSERT_FALSE(first.Open());
    ASSERT_FALSE(second.Open());
    std::string written;
    for (int line = 10; line < 24; ++line) {
        const std::string text = std::to_string(line) + "..\n";
        EXPECT_FALSE((line % 3 == 0 ? first : second).Write(text));
        written += text;
    }
    EXPECT_EQ(AllLines(folder), written);
    EXPECT_EQ(folder.Read("a.log"), written.substr(60));
    EXPECT_FALSE(first.Write(std::string(30, 'x')));
    EXPECT_EQ(AllLines(folder), written.substr(20) + std::string(30, 'x')) << "the oldest goes";
}

TEST(RotatingFileTest, WhatCanNotMakeWayGrows)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "a.1.log" / "in the way");
    RotatingFile file(folder / "a.log", 5, 1);
    EXPECT_FALSE(file.Write("1234\n"));
    EXPECT_FALSE(file.Write("5678\n"));
    EXPECT_EQ(folder.Read("a.log"), "1234\n5678\n");
}
