#include "platform/FileReplacement.h"

#include "platform/UniqueFd.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using kalvento::internal::FileReplacement;

namespace {

using EPath = FileReplacement::EPath;
constexpr EPath S_both[] = {FileReplacement::EPathOwn, FileReplacement::EPathTyped};

std::error_code Replace(const std::filesystem::path& a_path, EPath a_whose, std::string_view a_bytes)
{
    FileReplacement file;
    std::error_code error = file.Open(a_path, a_whose);
    if (!error)
        error = file.Write(a_bytes);
    if (!error)
        error = file.Flush();
    return error ? error : file.TakePlace();
}

class FileReplacementTest : public testing::TestWithParam<EPath> {
protected:
    TemporaryFolder m_folder;
};

} // namespace

TEST_P(FileReplacementTest, AppearsWholeWithTheOldRightsOrNotAtAll)
{
    const auto path = m_folder / "file";
    m_folder.Write("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    std::filesystem::create_hard_link(path, m_folder / "other");
    {
        FileReplacement dropped;
        EXPECT_FALSE(dropped.Open(path, GetParam()));
        EXPECT_FALSE(dropped.Write("lost"));
        EXPECT_FALSE(dropped.Flush());
    }
    EXPECT_EQ(m_folder.Read("file"), "old");
    EXPECT_EQ(m_folder.CountFiles(), 2U);

    FileReplacement file;
    EXPECT_FALSE(file.Open(path, GetParam()));
    EXPECT_FALSE(file.Write(std::string_view("a\0", 2)));
    const std::string large(3000000, 'b');
    EXPECT_FALSE(file.Write(large));
    EXPECT_EQ(m_folder.Read("file"), "old");
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.TakePlace());
    EXPECT_EQ(m_folder.Read("file"), std::string("a\0", 2) + large);
    EXPECT_EQ(m_folder.Read("other"), "old");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(m_folder.CountFiles(), 2U);
}

TEST_P(FileReplacementTest, WhereNothingCanBePutNothingIsLeft)
{
    std::filesystem::create_directory(m_folder / "folder");
    m_folder.Write("file", "old");
    EXPECT_TRUE(Replace(m_folder / "folder", GetParam(), "x"));
    EXPECT_EQ(Replace(m_folder / "missing" / "file", GetParam(), "x"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(Replace(m_folder / "file" / "file", GetParam(), "x"), std::errc::not_a_directory);
    EXPECT_EQ(Replace(m_folder / std::string(300, 'x'), GetParam(), "x"), std::errc::filename_too_long);

    // A folder comes in the way after the writing has begun.
    FileReplacement late;
    EXPECT_FALSE(late.Open(m_folder / "late", GetParam()));
    EXPECT_FALSE(late.Write("x"));
    std::filesystem::create_directory(m_folder / "late");
    EXPECT_FALSE(late.Flush());
    EXPECT_EQ(late.TakePlace(), std::errc::is_a_directory);
    EXPECT_EQ(m_folder.Read("file"), "old");
}

TEST_P(FileReplacementTest, TheLastOfTwoStays)
{
    FileReplacement first;
    FileReplacement second;
    for (FileReplacement* const file : {&first, &second}) {
        EXPECT_FALSE(file->Open(m_folder / "file", GetParam()));
        EXPECT_FALSE(file->Write(file == &first ? "first" : "second"));
        EXPECT_FALSE(file->Flush());
    }
    EXPECT_FALSE(second.TakePlace());
    EXPECT_FALSE(first.TakePlace());
    EXPECT_EQ(m_folder.Read("file"), "first");
    EXPECT_EQ(m_folder.CountFiles(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Paths, FileReplacementTest, testing::ValuesIn(S_both));

TEST_F(FileReplacementTest, OnlyATypedPathLeadsThroughLinks)
{
    std::filesystem::create_directory(m_folder / "inner");
    std::filesystem::create_symlink("inner/file", m_folder / "first");
    std::filesystem::create_symlink("first", m_folder / "second");
    std::filesystem::create_symlink("loop", m_folder / "loop");

    EXPECT_FALSE(Replace(m_folder / "second", FileReplacement::EPathTyped, "typed"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "first"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "second"));
    EXPECT_EQ(m_folder.Read("inner/file"), "typed");
    EXPECT_EQ(Replace(m_folder / "loop", FileReplacement::EPathTyped, "x"),
              std::errc::too_many_symbolic_link_levels);

    EXPECT_FALSE(Replace(m_folder / "second", FileReplacement::EPathOwn, "own"));
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(m_folder / "second")));
    EXPECT_EQ(m_folder.Read("second"), "own");
    EXPECT_EQ(m_folder.Read("inner/file"), "typed");
    EXPECT_EQ(m_folder.CountFiles(), 4U);
}

TEST_F(FileReplacementTest, OnlyATypedPathMayBeADevice)
{
    std::filesystem::create_symlink("/dev/full", m_folder / "full");
    EXPECT_EQ(Replace(m_folder / "full", FileReplacement::EPathTyped, "x"), std::errc::no_space_on_device);
    EXPECT_FALSE(Replace("/dev/null", FileReplacement::EPathTyped, "x"));
    EXPECT_EQ(Replace("/dev/null", FileReplacement::EPathOwn, "x"), std::errc::not_supported);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "full"));
    EXPECT_EQ(m_folder.CountFiles(), 1U);
}

TEST_F(FileReplacementTest, WhatAKilledProcessLeftGoesAndWhatAnotherWaitsWithStays)
{
    m_folder.Write(".kalvento-1-1.tmp", "left");
    m_folder.Write(".kalvento-1-2.tmp", "in use");
    m_folder.Write(".kalvento-notes", "a user's");
    const kalvento::internal::UniqueFd used(::open((m_folder / ".kalvento-1-2.tmp").c_str(), O_RDONLY));
    ASSERT_EQ(::flock(used.Get(), LOCK_EX), 0);
    EXPECT_FALSE(Replace(m_folder / "file", FileReplacement::EPathOwn, "new"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / ".kalvento-1-1.tmp"));
    EXPECT_EQ(m_folder.Read(".kalvento-1-2.tmp"), "in use");
    EXPECT_EQ(m_folder.CountFiles(), 3U);
}

// Without /proc a file can't get its name later: it has one of its own from the start.
TEST_F(FileReplacementTest, WithoutNamesLaterItBearsOneOfItsOwn)
{
    m_folder.Write("file", "old");
    const pid_t child = ::fork();
    if (child == 0) {
        if ((::geteuid() != 0 && ::unshare(CLONE_NEWUSER) != 0) || ::chroot(m_folder.GetPath().c_str()) != 0)
            ::_exit(77);
        const auto countFiles = [] { return std::distance(std::filesystem::directory_iterator("/"), {}); };
        {
            FileReplacement dropped;
            if (dropped.Open("/file", FileReplacement::EPathOwn) || countFiles() != 2)
                ::_exit(1);
        }
        if (countFiles() != 1 || TemporaryFolder::ReadFile("/file") != "old")
            ::_exit(2);
        ::_exit(Replace("/file", FileReplacement::EPathOwn, "new") ? 3 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "another root folder is not for this user";
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(m_folder.Read("file"), "new");
    EXPECT_EQ(m_folder.CountFiles(), 1U);
}
