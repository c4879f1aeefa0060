#pragma once

#include "platform/Export.h"

#include <exception>

namespace kalvento::internal {

/// While it lives, Ctrl-C (SIGINT), SIGTERM and a terminal that goes away (SIGHUP) don't end the process but make a
/// descriptor readable, so that a program that waits can finish its output, give the terminal back and end in order. A
/// SIGHUP that the process was told to ignore (nohup) stays ignored. Made and destroyed on the main thread, the inner
/// ones first. As long as there is only one, a second signal ends the process at once: work that never looks must not
/// keep it.
class KALVENTO_API Interruption {
public:
    /// Raises std::system_error where the system gives no descriptor.
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// For Descriptors::WaitForAny: ready once the first signal has come.
    int GetFd() const;

    /// GetFd as long as there is one of these, else -1. Any thread.
    static int GetWaitFd() noexcept;
    /// The first signal that came while there was one of these; 0: none. Any thread.
    static int GetSignal() noexcept;
    /// Raises Interrupted once a signal has come. Any thread.
    static void Check();
    /// Ends the process as the signal would have, so that who started it learns of that.
    [[noreturn]] static void EndBy(int a_signal);
};

/// Work ends early because a signal came; raised by what looks at Interruption.
class KALVENTO_API Interrupted : public std::exception {
public:
    explicit Interrupted(int a_signal);

    int GetSignal() const { return m_signal; }
    /// The signal's name: "SIGTERM".
    const char* what() const noexcept override { return m_name; }

private:
    int m_signal;
    const char* m_name;
};

} // namespace kalvento::internal
