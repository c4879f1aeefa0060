#pragma once

#include <csignal>

namespace kalvento::tool {

/// While it lives, Ctrl-C (SIGINT), SIGTERM and a terminal that goes away (SIGHUP) don't end the process but make a
/// descriptor readable, so that a command that waits can finish its output, give the terminal back and end in order. A SIGHUP
/// that the process was told to ignore (nohup) stays ignored. One at a time; made and destroyed on the main thread.
class Interruption {
public:
    /// Raises ToolError (EExitFailure) where the system gives no descriptor.
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// For poll: readable from the first signal on.
    int GetDescriptor() const { return m_descriptor; }
    bool IsRaised() const;

private:
    int m_descriptor;
    struct sigaction m_oldInterrupt {};
    struct sigaction m_oldTerminate {};
    struct sigaction m_oldHangUp {};
};

} // namespace kalvento::tool
