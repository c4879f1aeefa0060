#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

namespace kalvento::internal {

/// Wakes a thread that waits for descriptors: up from Raise until Lower. Any thread may call; what was written before
/// Raise is visible after the Lower that found it up.
class KALVENTO_API WakeUp {
public:
    /// Raises std::system_error, whose text begins with a_purpose, where the system has no more descriptors.
    explicit WakeUp(const char* a_purpose = "eventfd");

    /// May be called in a signal handler too: errno stays what it was.
    void Raise() noexcept;
    /// Whether it was up.
    bool Lower() noexcept;

    /// Ready to be read as long as it is up; for Descriptors::WaitForAny or a toolkit's loop. Not to be read from.
    int GetFd() const { return m_event.Get(); }

private:
    UniqueFd m_event;
};

} // namespace kalvento::internal
