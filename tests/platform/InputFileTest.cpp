#include "platform/InputFile.h"

#include "platform/Descriptors.h"
#include "platform/FileWatch.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <sys/stat.h>

using namespace kalvento::internal;

namespace {

std::string ReadOnce(const InputFile& a_file, std::size_t a_size)
{
    std::string bytes(a_size, '?');
    std::size_t count = 0;
    EXPECT_FALSE(a_file.Read(bytes.data(), a_size, count));
    return bytes.substr(0, count);
}

bool TakeNews(const FileWatch& a_watch)
{
    Descriptors::Awaited awaited{a_watch.GetFd()};
    const bool isNews = Descriptors::WaitForAny({&awaited, 1}, std::chrono::steady_clock::time_point::min());
    a_watch.Drain();
    return isNews;
}

} // namespace

TEST(InputFileTest, ReadsOnAsTheFileGrows)
{
    const TemporaryFolder folder;
    folder.Append("file", "abcde");
    InputFile file;
    ASSERT_FALSE(file.Open(folder / "file"));
    file.ExpectAllToBeRead();
    EXPECT_EQ(ReadOnce(file, 3), "abc");
    EXPECT_EQ(ReadOnce(file, 3), "de");
    EXPECT_EQ(ReadOnce(file, 3), "");
    folder.Append("file", "f");
    EXPECT_EQ(ReadOnce(file, 3), "f");

    InputFile::State state;
    EXPECT_FALSE(file.GetState(state));
    EXPECT_TRUE(state.isRegular);
    EXPECT_FALSE(state.isFolder);
    EXPECT_EQ(state.size, 6U);
}

TEST(InputFileTest, AFileStaysItselfUnderAnotherName)
{
    const TemporaryFolder folder;
    folder.Append("file", "old");
    InputFile file;
    InputFile::State opened;
    ASSERT_FALSE(file.Open(folder / "file"));
    ASSERT_FALSE(file.GetState(opened));
    std::filesystem::rename(folder / "file", folder / "file.1");
    EXPECT_FALSE(InputFile::LookAt(folder / "file"));
    folder.Append("file", "new");
    EXPECT_FALSE(opened.IsSameFileAs(InputFile::LookAt(folder / "file").value()));
    EXPECT_TRUE(opened.IsSameFileAs(InputFile::LookAt(folder / "file.1").value()));
}

TEST(InputFileTest, TellsWhatIsNoRegularFileAndWhatFails)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    InputFile file;
    InputFile::State state;
    EXPECT_FALSE(file.Open(folder / "pipe", false)) << "nobody writes, and nobody waits";
    EXPECT_FALSE(file.GetState(state));
    EXPECT_FALSE(state.isRegular || state.isFolder);
    EXPECT_EQ(ReadOnce(file, 3), "");

    EXPECT_FALSE(file.Open(folder.GetPath()));
    EXPECT_FALSE(file.GetState(state));
    EXPECT_TRUE(state.isFolder);
    char byte = 0;
    std::size_t count = 1;
    EXPECT_EQ(file.Read(&byte, 1, count), std::errc::is_a_directory);
    EXPECT_EQ(count, 0U);

    EXPECT_EQ(file.Open(folder / "missing"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(file.GetFd(), -1);
    EXPECT_EQ(file.GetState(state), std::errc::bad_file_descriptor);
}

TEST(FileWatchTest, GivesNoticeOfTheFileAndOfTheNextOneOfItsName)
{
    const TemporaryFolder folder;
    folder.Append("file", "old");
    const FileWatch watch(folder / "file");
    if (watch.GetFd() < 0)
        GTEST_SKIP() << "this system gives no notices";
    EXPECT_FALSE(TakeNews(watch));
    folder.Append("file", "more");
    EXPECT_TRUE(TakeNews(watch));
    EXPECT_FALSE(TakeNews(watch));
    std::filesystem::rename(folder / "file", folder / "file.1");
    EXPECT_TRUE(TakeNews(watch));
    folder.Append("file", "new");
    EXPECT_TRUE(TakeNews(watch));
    EXPECT_FALSE(TakeNews(FileWatch()));
}
