#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kalvento::internal {

/// What a provider can't serve at the moment, and why, for the user: files that were left out, instruments that can't
/// be read. Any thread.
class StoreFaults {
public:
    /// What is wrong with a_about, one line each; it takes the place of what was told of that before, and nothing says
    /// that all is well. True where that changed something.
    bool Tell(const std::string& a_about, std::vector<std::wstring> a_faults)
    {
        const std::lock_guard lock(m_mutex);
        const auto known = m_faults.find(a_about);
        if (known == m_faults.end() ? a_faults.empty() : known->second == a_faults)
            return false;
        if (a_faults.empty())
            m_faults.erase(known);
        else
            m_faults[a_about] = std::move(a_faults);
        return true;
    }
    /// Nothing is known any more of what begins so.
    void Forget(std::string_view a_aboutBegin)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_faults, [&](const auto& a_known) { return a_known.first.starts_with(a_aboutBegin); });
    }
    bool IsAny() const
    {
        const std::lock_guard lock(m_mutex);
        return !m_faults.empty();
    }
    /// All lines, up to a number that a person reads.
    std::wstring GetText() const
    {
        const std::lock_guard lock(m_mutex);
        std::wstring text;
        std::size_t count = 0;
        for (const auto& [about, faults] : m_faults)
            for (const std::wstring& fault : faults)
                if (++count <= S_mostLines)
                    text += L'\n' + fault;
        if (count > S_mostLines)
            text += L"\nI jeszcze: " + std::to_wstring(count - S_mostLines) + L"; wszystko jest w dzienniku";
        return text;
    }

private:
    static constexpr std::size_t S_mostLines = 30;

    mutable std::mutex m_mutex;
    std::map<std::string, std::vector<std::wstring>> m_faults;
};

} // namespace kalvento::internal
