#pragma once

#include "kalvento/ToolContext.h"

namespace CLI {
class App;
}

/// One function a command. Each adds its subcommand to the program with options, help and examples; the context must
/// outlive the parse, for the command runs from within it. A command raises ToolError to fail, or sets
/// ToolContext::exitCode.
namespace kalvento::tool {

/// `kalvento candles`: folds rows of CSV files or of a binary series block into candles.
void AddCandlesCommand(CLI::App& a_app, ToolContext& a_context);

} // namespace kalvento::tool
