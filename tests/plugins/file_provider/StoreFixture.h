#pragma once

#include "file_provider/FileStore.h"
#include "platform/WidePath.h"
#include "support/MarketData.h"
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

/// Notes down what a store tells, and waits for it.
class NotingListener : public IMarketStoreListener {
public:
    NotingListener() = default;
    void RowsAdded(const std::string& a_isin) override { Note("rows " + a_isin); }
    void Broken(const std::wstring& /*a_reason*/) override { Note("broken"); }
    void Restored() override { Note("restored"); }
    void InstrumentsChanged() override { Note("changed"); }

    std::vector<std::string> Told() const
    {
        const std::lock_guard lock(m_mutex);
        return m_told;
    }
    /// Until that was told so often. False after a minute.
    bool WaitFor(const std::string& a_what, std::size_t a_times = 1)
    {
        std::unique_lock lock(m_mutex);
        return m_wake.wait_for(lock, std::chrono::minutes(1), [&] {
            return static_cast<std::size_t>(std::count(m_told.begin(), m_told.end(), a_what)) >= a_times;
        });
    }

private:
    void Note(std::string a_what)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_told.push_back(std::move(a_what));
        }
        m_wake.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<std::string> m_told;
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
        const auto told = m_listener->Told();
        Move(*wait);
        return m_listener->WaitFor(what,
                                   static_cast<std::size_t>(std::count(told.begin(), told.end(), what)) + 1);
    }
    void Move(std::chrono::steady_clock::duration a_by)
    {
        m_clock.Advance(a_by);
        m_store->ClockMoved();
    }
    static std::string BytesOf(const History& a_rows)
    {
        std::ostringstream bytes;
        a_rows.Write(bytes);
        return std::move(bytes).str();
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
