#pragma once

#include "provider_kit/IMarketStore.h"
#include "support/Testing.h"

/// Notes down what a store tells ("rows ISIN", "broken", "restored", "changed"), and waits for it.
class NotingListener : public IMarketStoreListener {
public:
    void RowsAdded(const std::string& a_isin) override { Note("rows " + a_isin); }
    void Broken(const std::wstring& a_reason) override { Note("broken", a_reason); }
    void Restored() override { Note("restored"); }
    void InstrumentsChanged() override { Note("changed"); }
    void LeftOut(std::vector<std::wstring> a_faults) override
    {
        const std::lock_guard lock(m_mutex);
        m_leftOut = std::move(a_faults);
    }

    std::vector<std::string> Told() const
    {
        const std::lock_guard lock(m_mutex);
        return m_told;
    }
    /// Of the last break.
    std::wstring Reason() const
    {
        const std::lock_guard lock(m_mutex);
        return m_reason;
    }
    /// As told last.
    std::vector<std::wstring> GetLeftOut() const
    {
        const std::lock_guard lock(m_mutex);
        return m_leftOut;
    }
    std::size_t Count(const std::string& a_what) const
    {
        const std::lock_guard lock(m_mutex);
        return CountOf(a_what);
    }
    /// Until that was told so often. False after a minute.
    bool WaitFor(const std::string& a_what, std::size_t a_times = 1)
    {
        std::unique_lock lock(m_mutex);
        return m_wake.wait_for(lock, std::chrono::minutes(1), [&] { return CountOf(a_what) >= a_times; });
    }

private:
    std::size_t CountOf(const std::string& a_what) const
    {
        return static_cast<std::size_t>(std::ranges::count(m_told, a_what));
    }
    void Note(std::string a_what, const std::wstring& a_reason = {})
    {
        {
            const std::lock_guard lock(m_mutex);
            m_told.push_back(std::move(a_what));
            if (!a_reason.empty())
                m_reason = a_reason;
        }
        m_wake.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<std::string> m_told;
    std::wstring m_reason;
    std::vector<std::wstring> m_leftOut;
};
