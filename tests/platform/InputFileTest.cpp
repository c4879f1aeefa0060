#include "platform/InputFile.h"

#include "platform/Descriptors.h"
#include "platform/FileWatch.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <sys/stat.h>

using namespace kalvento::internal;

namespace {

bool TakeNews(const FileWatch& a_watch)
{
    Descriptors::Awaited awaited{a_watch.GetFd()};
    const bool isNews = Descriptors::WaitForAny({&awaited, 1}, std::chrono::steady_clock::time_point::min());
    a_watch.Drain();
    return isNews;
}

} // namespace

TEST(InputFileTest, TellsWhatIsNoRegularFileAndWhatFails)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    InputFile file;
    InputFile::State state;
    EXPECT_FALSE(file.Open(folder / "pipe", false)) << "nobody writes, and nobody waits";
    EXPECT_FALSE(file.GetState(state));
    EXPECT_FALSE(state.isRegular || state.isFolder);
    char byte = 0;
    std::size_t count = 1;
    EXPECT_FALSE(file.Read(&byte, 1, count));
    EXPECT_EQ(count, 0U);

    EXPECT_FALSE(file.Open(folder.GetPath()));
    EXPECT_FALSE(file.GetState(state));
    EXPECT_TRUE(state.isFolder);
    count = 1;
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
