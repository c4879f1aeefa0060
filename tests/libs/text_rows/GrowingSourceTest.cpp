#include "text_rows/GrowingSource.h"

#include "support/TemporaryFolder.h"
#include "support/Testing.h"
#include "text_rows/RowsFault.h"

#include <sys/stat.h>

using namespace kalvento::rows;
using namespace std::chrono_literals;

namespace {

class GrowingSourceTest : public testing::Test {
protected:
    static std::string ReadAll(GrowingSource& a_source)
    {
        std::string text;
        char bytes[7]; // less than a line, so that lines come in pieces
        while (const std::size_t count = a_source.Read(bytes, sizeof bytes))
            text.append(bytes, count);
        return text;
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST_F(GrowingSourceTest, HalfALineWaitsForItsEnd)
{
    const auto source = GrowingSource::Open(m_folder.Write("ticks", "time,price\n2024-01-0"));
    EXPECT_EQ(ReadAll(*source), "time,price\n");
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitTimeout);
    m_folder.Append("ticks", "2 09:00,");
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitTimeout);
    m_folder.Append("ticks", "1.5\n2024");
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitMore);
    EXPECT_EQ(ReadAll(*source), "2024-01-02 09:00,1.5\n");
    source->ReleaseLastLine();
    EXPECT_EQ(ReadAll(*source), "2024\n");
}

TEST_F(GrowingSourceTest, ACutFileIsReadAgain)
{
    const auto source = GrowingSource::Open(m_folder.Write("ticks", "a\nlong line\nhalf"));
    EXPECT_EQ(ReadAll(*source), "a\nlong line\n");
    m_folder.Write("ticks", "x\ny\n");
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitCut);
    source->Restart();
    EXPECT_EQ(ReadAll(*source), "x\ny\n");
}

TEST_F(GrowingSourceTest, AReplacedFileIsFinishedFirst)
{
    const auto source = GrowingSource::Open(m_folder.Write("ticks", "a\nlast without end"));
    EXPECT_EQ(ReadAll(*source), "a\n");
    std::filesystem::rename(m_folder.Path("ticks"), m_folder.Path("ticks.1"));
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitTimeout);
    m_folder.Append("ticks.1", ", late\nmore");
    m_folder.Write("ticks", "new\n");
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitMore);
    EXPECT_EQ(ReadAll(*source), "last without end, late\n");
    // Nobody writes the end of "more" any longer.
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitMore);
    EXPECT_EQ(ReadAll(*source), "more\n");
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitReplaced);
    source->Restart();
    EXPECT_EQ(ReadAll(*source), "new\n");
}

TEST_F(GrowingSourceTest, APipeEndsWithItsWriter)
{
    const std::string path = m_folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    // Opened for both first, so that neither end waits for the other.
    std::fstream writer(path);
    const auto source = GrowingSource::Open(path);
    EXPECT_FALSE(source->IsFile());
    EXPECT_EQ(source->Wait(0ms, -1), GrowingSource::EWaitTimeout);
    writer << "a\nhal" << std::flush;
    EXPECT_EQ(source->Wait(std::nullopt, -1), GrowingSource::EWaitMore);
    EXPECT_EQ(ReadAll(*source), "a\n");
    writer.close();
    EXPECT_EQ(source->Wait(std::nullopt, -1), GrowingSource::EWaitEnded);
    source->ReleaseLastLine();
    EXPECT_EQ(ReadAll(*source), "hal\n");
}

TEST_F(GrowingSourceTest, AStreamIsReadToItsEnd)
{
    std::istringstream stream("a,b\n1,2");
    const auto source = GrowingSource::FromStream(stream, "stream");
    EXPECT_EQ(ReadAll(*source), "a,b\n");
    EXPECT_EQ(source->Wait(std::nullopt, -1), GrowingSource::EWaitEnded);
}

TEST_F(GrowingSourceTest, WhatCannotBeFollowedIsRefused)
{
    EXPECT_THROW(GrowingSource::Open(m_folder.Path("none")), RowsFault);
    EXPECT_THROW(GrowingSource::Open(m_folder.Path("")), RowsFault);
    const auto endless =
        GrowingSource::Open(m_folder.Write("ticks", std::string((1 << 24) + (1 << 20), 'x')));
    EXPECT_THROW(endless->Wait(0ms, -1), RowsFault);
}
