#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kalvento::internal {

/// A program started beside us. It is nobody's child: the system takes care of its end, so it never stays as a zombie,
/// whether or not anybody waits for it. It inherits the standard streams and no other file of ours. The object is our
/// hold on it, by which it can be ended; it holds one file descriptor and may be dropped at any time.
class KALVENTO_API ChildProcess {
public:
    /// a_program: a path, or a name to be looked up in PATH; a_arguments: what follows it. Empty where the program
    /// can't be started; errno tells why. Safe from any thread.
    static std::optional<ChildProcess> Start(const std::string& a_program,
                                             const std::vector<std::string>& a_arguments);

    /// Asks the process to end, and after a_patience ends it by force. False where it can't be reached any more: it is
    /// dead or not ours.
    bool End(std::chrono::milliseconds a_patience) const;
    /// Waits for the end of the process; false where the time runs out first.
    bool Wait(std::chrono::milliseconds a_patience) const;

private:
    explicit ChildProcess(UniqueFd a_process);

    UniqueFd m_process; // a pidfd: it never comes to mean another process
};

} // namespace kalvento::internal
