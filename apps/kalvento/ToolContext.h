#pragma once

#include "kalvento/ExitCodes.h"

#include <cstdint>
#include <iosfwd>
#include <stdexcept>
#include <string>

namespace kalvento::rows {}

namespace kalvento::tool {

using namespace kalvento::rows; // what the commands read with

/// What one run of the tool works with. The program hands in the process's own streams, a test its string streams.
/// The streams outlive the run. One thread at a time, except for files folded in parallel, whose notes are written in
/// order after the threads have ended.
struct ToolContext {
    std::istream& in;           ///< What "-" reads.
    std::ostream& out;          ///< Results, and nothing else.
    std::ostream& err;          ///< Notes, errors, progress.
    bool errIsTerminal = false; ///< Progress is shown only then.
    bool outIsTerminal = false;
    bool quiet = false;         ///< Neither notes nor progress; errors always.
    int exitCode = EExitOk;     ///< Set by a command that ends without raising.
    std::uint64_t rowsRead = 0; ///< By what shows its progress.
    int endedBy = 0;            ///< The signal that ended a command before its work was done; 0: none.
};

/// Ends the command with an exit code and a text for standard error. The text says what, where, and what would be
/// accepted instead; UTF-8, no line feed at its end.
class ToolError : public std::runtime_error {
public:
    ToolError(EExitCode a_exitCode, const std::string& a_message)
        : std::runtime_error(a_message), m_exitCode(a_exitCode)
    {}
    EExitCode GetExitCode() const { return m_exitCode; }

private:
    EExitCode m_exitCode;
};

/// The reader of standard output is gone: the run ends quietly.
class OutputClosed : public std::runtime_error {
public:
    OutputClosed() : std::runtime_error("standard output was closed") {}
};

} // namespace kalvento::tool
