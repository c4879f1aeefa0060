#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

class ProviderBase;

namespace kalvento::internal {

/// The pause after a failure of the store, which doubles with every consecutive failure.
class FailurePause {
public:
    /// The length of the pause that begins now.
    std::chrono::milliseconds Take() { return std::exchange(m_next, std::min(2 * m_next, S_longest)); }
    void Reset() { m_next = S_first; }

private:
    // Short enough for a store that failed once, long enough for one that keeps failing.
    static constexpr std::chrono::milliseconds S_first{250};
    static constexpr std::chrono::milliseconds S_longest = std::chrono::seconds(8);

    std::chrono::milliseconds m_next = S_first;
};

/// In a handler: the text of what was raised, for the user.
std::wstring FailureText();
/// In a handler: what the store raised, and of which instrument; a_isin is empty where none is concerned.
void LogStoreFailure(const ProviderBase& a_provider, const char* a_place, int a_line,
                     const std::string& a_isin);

} // namespace kalvento::internal
