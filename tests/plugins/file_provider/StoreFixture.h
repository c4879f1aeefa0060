#pragma once

#include "file_provider/FileStore.h"
#include "platform/WidePath.h"
#include "support/BlockTools.h"
#include "support/MarketData.h"
#include "support/NotingListener.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

/// A clock that stands still until it is told.
class HandClock {
public:
    std::chrono::steady_clock::time_point Now() const
    {
        return std::chrono::steady_clock::time_point(std::chrono::nanoseconds(m_now));
    }
    void Advance(std::chrono::steady_clock::duration a_by)
    {
        m_now += std::chrono::duration_cast<std::chrono::nanoseconds>(a_by).count();
    }

private:
    std::atomic<std::int64_t> m_now = 1'000'000'000;
};

/// A folder with sources, one with histories, and stores over them.
class FileStoreTest : public testing::Test {
protected:
    void CopyMarket(const std::string& a_from, const std::string& a_to)
    {
        std::filesystem::create_directories((m_sources / a_to).parent_path());
        std::filesystem::copy_file(MarketData::Path(a_from), m_sources / a_to);
    }
    void WriteSource(const std::string& a_name, const std::string& a_text)
    {
        std::filesystem::create_directories((m_sources / a_name).parent_path());
        std::ofstream(m_sources / a_name, std::ios::binary) << a_text;
    }
    /// Opened by OpenStore; speed 0 shows the whole day.
    FileStore& MakeStore(double a_speed = 0.0, const std::string& a_day = {}, const std::string& a_start = {})
    {
        m_store.reset();
        m_listener = std::make_unique<NotingListener>();
        m_store = std::make_unique<FileStore>(FileStoreOptions{m_sources.GetPath(), a_day, a_speed, a_start});
        FileStoreHost host;
        host.folderOf = [this](const std::string& a_name) {
            std::error_code ignored; // a folder that can't be made shows itself when a file is written
            std::filesystem::create_directories(m_histories / a_name, ignored);
            return WidePath::ToWide(m_histories / a_name);
        };
        host.now = [this] { return m_clock.Now(); };
        m_store->SetHost(std::move(host));
        return *m_store;
    }
    FileStore& OpenStore(double a_speed = 0.0, const std::string& a_day = {}, const std::string& a_start = {})
    {
        MakeStore(a_speed, a_day, a_start).Open(*m_listener);
        EXPECT_TRUE(m_listener->WaitFor("restored"));
        return *m_store;
    }
    /// Moves the clock to the next row of the instrument and waits until that was told.
    bool Step(const std::string& a_isin)
    {
        const auto wait = m_store->GetTimeToNextRow(a_isin);
        if (!wait)
            return false;
        const std::string what = "rows " + a_isin;
        const std::size_t told = m_listener->Count(what);
        Move(*wait);
        return m_listener->WaitFor(what, told + 1);
    }
    void Move(std::chrono::steady_clock::duration a_by)
    {
        m_clock.Advance(a_by);
        m_store->ClockMoved();
    }
    std::string AllBytes(const std::string& a_isin)
    {
        return BytesOf(m_store->ReadRows(a_isin, 0, m_store->GetRowCount(a_isin)));
    }
    std::vector<std::filesystem::path> Parts(const std::string& a_name) const
    {
        std::vector<std::filesystem::path> parts;
        for (const auto& entry : std::filesystem::directory_iterator(m_histories / a_name)) {
            if (entry.path().extension() == ".block")
                parts.push_back(entry.path());
        }
        std::sort(parts.begin(), parts.end());
        return parts;
    }

    TemporaryFolder m_sources;
    TemporaryFolder m_histories;
    HandClock m_clock;
    std::unique_ptr<NotingListener> m_listener;
    std::unique_ptr<FileStore> m_store;
};
