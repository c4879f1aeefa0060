#pragma once

#include "platform/Export.h"

namespace kalvento::internal {

/// While it lives, Ctrl-C (SIGINT), SIGTERM and a terminal that goes away (SIGHUP) don't end the process but make a
/// descriptor readable, so that a program that waits can finish its output, give the terminal back and end in order. A
/// SIGHUP that the process was told to ignore (nohup) stays ignored. One at a time; made and destroyed on the main
/// thread.
class KALVENTO_API Interruption {
public:
    /// Raises std::system_error where the system gives no descriptor.
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// For Descriptors::WaitForAny: ready once the first signal has come.
    int GetFd() const;
};

} // namespace kalvento::internal
