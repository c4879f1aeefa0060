#include "kalvento/Commands.h"

#include <CLI/CLI.hpp>

namespace kalvento::tool {

void AddCandlesCommand(CLI::App& a_app, ToolContext& a_context)
{
    CLI::App* command = a_app.add_subcommand("candles", "Fold rows into candles");
    command->callback([&a_context] {
        a_context.exitCode = EExitUsage;
        throw ToolError(EExitUsage, "candles: needs input files");
    });
}

} // namespace kalvento::tool
