#pragma once

#include "kalvento/ToolContext.h"
#include "platform/FileReplacement.h"

#include <string>
#include <string_view>

namespace kalvento::tool {

/// Raises where what was written to standard output did not arrive: OutputClosed where its reader went away, else
/// ToolError (EExitFailure).
void CheckStandardOutput(const ToolContext& a_context);

/// Where a command's result goes: standard output, or a file that appears whole or not at all, put in its place
/// by Commit; without Commit nothing is left. Standard output is written as the result comes.
/// A full disk raises ToolError (EExitFailure), a reader that left standard output OutputClosed.
class OutputTarget {
public:
    /// a_path: the file, or "" and "-" for the context's output, which must then outlive this.
    OutputTarget(const std::string& a_path, ToolContext& a_context);

    void Write(std::string_view a_bytes);
    /// Flushes to the disk and puts the file in its place. Nothing may be written afterwards.
    void Commit();

private:
    ToolContext& m_context;
    std::string m_path; // empty: standard output
    internal::FileReplacement m_file;
};

} // namespace kalvento::tool
