#include "platform/RunProgram.h"

#include "platform/HeldFile.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

using kalvento::internal::HeldFile;
using kalvento::internal::ProgramEnd;
using kalvento::internal::RunProgram;

namespace {

// A program that is a script of the shell.
ProgramEnd RunScript(const std::string& a_script,
                     std::chrono::milliseconds a_patience = std::chrono::minutes(1), bool a_mayGoOn = true)
{
    const TemporaryFolder folder;
    const std::string program = folder.Write("program", "#!/bin/sh\n" + a_script);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    return RunProgram(program, "a\nb", a_patience, [a_mayGoOn] { return a_mayGoOn; });
}

} // namespace

TEST(RunProgramTest, TheEndIsToldAndNothingIsLeftRunning)
{
    const ProgramEnd good = RunScript("sed s/^/-/ >&3; echo lost; exit 5");
    EXPECT_EQ(good.how, ProgramEnd::EExited);
    EXPECT_EQ(good.number, 5);
    EXPECT_EQ(good.answer, "-a\n-b");

    const ProgramEnd killed = RunScript("echo begun >&3; kill -11 $$");
    EXPECT_EQ(killed.how, ProgramEnd::EKilled);
    EXPECT_EQ(killed.number, 11);
    EXPECT_EQ(killed.answer, "begun\n");

    // The deadline would come in a minute, or what it has started would hold the answer for an hour.
    EXPECT_EQ(RunScript("sleep 3600", std::chrono::minutes(1), false).how, ProgramEnd::EGivenUp);
    EXPECT_EQ(RunScript("sleep 3600", std::chrono::milliseconds(50)).how, ProgramEnd::EOverdue);
    EXPECT_EQ(RunScript("sleep 3600 & exit 0").how, ProgramEnd::EExited);
    EXPECT_EQ(RunProgram("/nonexistent", {}, std::chrono::minutes(1), [] { return true; }).number, ENOENT);
}

TEST(HeldFileTest, OnlyWhatNobodyHoldsIsTaken)
{
    const TemporaryFolder folder;
    auto file = HeldFile::Make(folder.GetPath(), ".held");
    ASSERT_TRUE(file);
    const std::filesystem::path path = file->GetPath();
    EXPECT_TRUE(file->Write("a longer text"));
    EXPECT_TRUE(file->Write("text"));
    EXPECT_FALSE(HeldFile::Take(path));
    file.reset();
    std::filesystem::create_symlink(path, folder / "link");
    EXPECT_FALSE(HeldFile::Take(folder / "link")) << "which anybody may have laid";
    auto taken = HeldFile::Take(path);
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->Read(), "text");
    taken->Remove();
    EXPECT_FALSE(HeldFile::Take(path));
}
