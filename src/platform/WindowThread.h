#pragma once

#include "platform/Export.h"

namespace kalvento::internal {

/// Makes its thread the one that windows belong to, for the life of the object; it ends on that thread. Whoever owns the
/// toolkit holds it: made before the first window, ended after the last.
class KALVENTO_API WindowThread {
public:
    /// Raises std::logic_error where the process has one already.
    WindowThread();
    ~WindowThread();
    WindowThread(const WindowThread&) = delete;
    WindowThread& operator=(const WindowThread&) = delete;

    /// Whether the caller is on it; false for all while there is none.
    static bool IsCurrent() noexcept;
    /// Raises std::logic_error, which names a_operation, where the caller is not.
    static void Require(const char* a_operation);
};

} // namespace kalvento::internal
