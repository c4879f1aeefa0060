#pragma once

#include "kalvento/Tool.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

/// What a run of the tool left behind.
struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// Runs the whole tool in this process.
inline ToolRun RunToolHere(const std::vector<std::string>& a_arguments, const std::string& a_input = {})
{
    std::istringstream in(a_input);
    std::ostringstream out;
    std::ostringstream err;
    kalvento::tool::ToolContext context{in, out, err};
    ToolRun run;
    run.exitCode = kalvento::tool::RunTool(a_arguments, context);
    run.out = out.str();
    run.err = err.str();
    return run;
}
