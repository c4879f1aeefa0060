#pragma once

#include "kalvento/CommandLine.h"
#include "kalvento/ToolContext.h"
#include "text_rows/ReadOptions.h"

#include <string>

namespace kalvento::tool {

/// What the command line says about an input of rows.
struct InputOptions : ReadOptions {
    InputOptions() { findSymbols = true; }

    std::string rejectFile; ///< Where lines go that were set aside; empty: nowhere.
};

/// `--symbol`: one instrument out of an input that holds several.
void AddSymbolOption(const Command& a_command, InputOptions& a_options);

/// Adds the options that fill an InputOptions, which must outlive the parse.
void AddReadOptions(const Command& a_command, InputOptions& a_options);

} // namespace kalvento::tool
