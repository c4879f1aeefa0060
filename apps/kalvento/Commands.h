#pragma once

#include "kalvento/CommandLine.h"
#include "kalvento/ToolContext.h"

#include <string>

/// One function for each command. It adds the subcommand to the program with options, help and examples; the context
/// must outlive the parse, since the command runs inside it. A command raises ToolError to fail, or sets
/// ToolContext::exitCode.
namespace kalvento::tool {

/// Two lines about the exit codes, for the end of every help page.
std::string ExitCodesHelp();

/// `kalvento adjust`: corrects a history by the instrument's corporate operations.
void AddAdjustCommand(Command a_app, ToolContext& a_context);

/// `kalvento candles`: folds rows of CSV files or of a binary series block into candles.
void AddCandlesCommand(Command a_app, ToolContext& a_context);

/// `kalvento check`: tells whether a series block or a text file of rows is sound, and where the first fault lies.
void AddCheckCommand(Command a_app, ToolContext& a_context);

/// `kalvento explain`: tells which rows made a candle, and how.
void AddExplainCommand(Command a_app, ToolContext& a_context);

/// `kalvento generate`: writes trades of an invented exchange, the same ones for the same options on every machine.
void AddGenerateCommand(Command a_app, ToolContext& a_context);

/// `kalvento live`: follows a growing file of ticks and prints each change of a candle.
void AddLiveCommand(Command a_app, ToolContext& a_context);

/// `kalvento load`: puts rows of files into the database that the plug-in sql_provider serves.
void AddLoadCommand(Command a_app, ToolContext& a_context);

/// `kalvento operations`: shows, checks and converts a list of corporate operations.
void AddOperationsCommand(Command a_app, ToolContext& a_context);

/// `kalvento prove`: folds ticks on every road that live data takes and compares the candles bit for bit.
void AddProveCommand(Command a_app, ToolContext& a_context);

/// `kalvento series`: lists the vocabulary of series.
void AddSeriesCommand(Command a_app, ToolContext& a_context);

/// `kalvento show`: prints what a series block holds.
void AddShowCommand(Command a_app, ToolContext& a_context);

/// `kalvento watch`: shows instruments of a provider plug-in in the terminal, as they are traded.
void AddWatchCommand(Command a_app, ToolContext& a_context);

} // namespace kalvento::tool
