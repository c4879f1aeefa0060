#include "platform/FileTools.h"

#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <sys/stat.h>

namespace {

class FileToolsTest : public testing::Test {
protected:
    TemporaryFolder m_folder;
    std::error_code m_error;
};

} // namespace

TEST_F(FileToolsTest, ReadsUpToItsBound)
{
    const std::string bytes(10000, '\0');
    const auto path = m_folder / "file";
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{4096}, bytes.size()}) {
        SCOPED_TRACE(length);
        m_folder.Write("file", bytes.substr(0, length));
        EXPECT_EQ(FileTools::ReadFile(path, length, m_error), bytes.substr(0, length));
        EXPECT_FALSE(m_error);
    }
    EXPECT_FALSE(FileTools::ReadFile(path, bytes.size() - 1, m_error));
    EXPECT_EQ(m_error, std::errc::file_too_large);
    // The size of such a file is told as 0.
    EXPECT_GT(FileTools::ReadFile("/proc/self/status", 100000, m_error).value_or("").size(), 0U);
    EXPECT_FALSE(FileTools::ReadFile("/proc/self/status", 10, m_error));
    EXPECT_EQ(m_error, std::errc::file_too_large);
}

TEST_F(FileToolsTest, RefusesWhatIsNoRegularFile)
{
    ASSERT_EQ(::mkfifo((m_folder / "pipe").c_str(), 0600), 0);
    for (const std::filesystem::path& path :
         {m_folder / "pipe", m_folder.GetPath(), std::filesystem::path("/dev/zero")}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(FileTools::ReadFile(path, 100, m_error));
        EXPECT_EQ(m_error, std::errc::not_supported);
        EXPECT_FALSE(FileTools::ReplaceFile(path, "x", m_error));
        EXPECT_EQ(m_error, std::errc::not_supported);
    }
    EXPECT_FALSE(FileTools::ReadFile(m_folder / "missing", 100, m_error));
    EXPECT_EQ(m_error, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(FileTools::ReplaceFile(m_folder / "missing" / "file", "x", m_error));
    EXPECT_EQ(m_error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(m_folder.CountFiles(), 1U);
}

TEST_F(FileToolsTest, WhatIsKeptAsideTakesNobodysPlace)
{
    const auto when = std::chrono::system_clock::from_time_t(1'700'000'000);
    std::set<std::filesystem::path> names;
    for (const char* const bytes : {"one", "two", "three"}) {
        m_folder.Write("name.xml", bytes);
        const auto aside = FileTools::KeepAside(m_folder / "name.xml", when, m_error);
        ASSERT_TRUE(aside);
        EXPECT_FALSE(m_error);
        EXPECT_FALSE(std::filesystem::exists(m_folder / "name.xml"));
        EXPECT_EQ(TemporaryFolder::ReadFile(*aside), bytes);
        names.insert(*aside);
    }
    ASSERT_EQ(names.size(), 3U);
    const std::string first = names.begin()->filename().string();
    EXPECT_TRUE(first.starts_with("name.xml.damaged-2023111")) << first;
    EXPECT_EQ(first.size(), std::string("name.xml.damaged-YYYYMMDD-HHMMSS").size());
    EXPECT_TRUE(names.contains(m_folder / (first + "-2")));
    EXPECT_TRUE(names.contains(m_folder / (first + "-3")));

    EXPECT_FALSE(FileTools::KeepAside(m_folder / "missing", when, m_error));
    EXPECT_EQ(m_error, std::errc::no_such_file_or_directory);
}
