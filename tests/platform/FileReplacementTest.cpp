#include "platform/FileReplacement.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

using kalvento::internal::FileReplacement;

namespace {

using EPath = FileReplacement::EPath;
constexpr EPath S_both[] = {FileReplacement::EPathOwn, FileReplacement::EPathTyped};

void Put(const std::filesystem::path& a_path, const std::string& a_bytes)
{
    std::ofstream(a_path, std::ios::binary) << a_bytes;
}

std::string Get(const std::filesystem::path& a_path)
{
    std::ifstream file(a_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::ptrdiff_t CountFiles(const std::filesystem::path& a_folder)
{
    return std::distance(std::filesystem::directory_iterator(a_folder), {});
}

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
    Put(path, "old");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    std::filesystem::create_hard_link(path, m_folder / "other");
    {
        FileReplacement dropped;
        EXPECT_FALSE(dropped.Open(path, GetParam()));
        EXPECT_FALSE(dropped.Write("lost"));
        EXPECT_FALSE(dropped.Flush());
    }
    EXPECT_EQ(Get(path), "old");
    EXPECT_EQ(CountFiles(m_folder.GetPath()), 2);

    FileReplacement file;
    EXPECT_FALSE(file.Open(path, GetParam()));
    EXPECT_FALSE(file.Write(std::string_view("a\0", 2)));
    EXPECT_FALSE(file.Write("b"));
    EXPECT_EQ(Get(path), "old");
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.TakePlace());
    EXPECT_EQ(Get(path), std::string("a\0b", 3));
    EXPECT_EQ(Get(m_folder / "other"), "old");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(CountFiles(m_folder.GetPath()), 2);
}

TEST_P(FileReplacementTest, WhereNothingCanBePutNothingIsLeft)
{
    std::filesystem::create_directory(m_folder / "folder");
    Put(m_folder / "file", "old");
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
    EXPECT_EQ(Get(m_folder / "file"), "old");
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
    EXPECT_EQ(Get(m_folder / "file"), "first");
    EXPECT_EQ(CountFiles(m_folder.GetPath()), 1);
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
    EXPECT_EQ(Get(m_folder / "inner" / "file"), "typed");
    EXPECT_EQ(Replace(m_folder / "loop", FileReplacement::EPathTyped, "x"),
              std::errc::too_many_symbolic_link_levels);

    EXPECT_FALSE(Replace(m_folder / "second", FileReplacement::EPathOwn, "own"));
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(m_folder / "second")));
    EXPECT_EQ(Get(m_folder / "second"), "own");
    EXPECT_EQ(Get(m_folder / "inner" / "file"), "typed");
    EXPECT_EQ(CountFiles(m_folder.GetPath()), 4);
}

TEST_F(FileReplacementTest, OnlyATypedPathMayBeADevice)
{
    std::filesystem::create_symlink("/dev/full", m_folder / "full");
    EXPECT_EQ(Replace(m_folder / "full", FileReplacement::EPathTyped, "x"), std::errc::no_space_on_device);
    EXPECT_FALSE(Replace("/dev/null", FileReplacement::EPathTyped, "x"));
    EXPECT_EQ(Replace("/dev/null", FileReplacement::EPathOwn, "x"), std::errc::not_supported);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "full"));
    EXPECT_EQ(CountFiles(m_folder.GetPath()), 1);
}

// Without /proc a file can't get its name later: it has one of its own from the start.
TEST_F(FileReplacementTest, WithoutNamesLaterItBearsOneOfItsOwn)
{
    Put(m_folder / "file", "old");
    const pid_t child = ::fork();
    if (child == 0) {
        if ((::geteuid() != 0 && ::unshare(CLONE_NEWUSER) != 0) || ::chroot(m_folder.GetPath().c_str()) != 0)
            ::_exit(77);
        {
            FileReplacement dropped;
            if (dropped.Open("/file", FileReplacement::EPathOwn) || CountFiles("/") != 2)
                ::_exit(1);
        }
        if (CountFiles("/") != 1 || Get("/file") != "old")
            ::_exit(2);
        ::_exit(Replace("/file", FileReplacement::EPathOwn, "new") ? 3 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "another root folder is not for this user";
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(Get(m_folder / "file"), "new");
    EXPECT_EQ(CountFiles(m_folder.GetPath()), 1);
}
