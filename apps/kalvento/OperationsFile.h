#pragma once

#include "history_operations/HistoryOperations.h"
#include "kalvento/ToolContext.h"

#include <string>
#include <string_view>
#include <vector>

namespace kalvento::tool {

/// A list of corporate operations as it was read, with what is odd about it.
struct OperationsFile {
    std::string name;
    bool isXml = false; ///< The XML form, else the text form of a data source.
    HistoryOperations list;
    /// What the library takes although nobody can have meant it, as "line 3: ...": numbers that can't be read and so
    /// are 0, dates that no calendar has, factors that wipe prices out, identifiers given twice.
    std::vector<std::string> oddities;
};

/// Reads either form, which it recognises by itself, from a file or, for "-", from the context's input. Raises
/// ToolError: EExitNoInput for what can't be opened, EExitBadData for what the library refuses, with the line.
OperationsFile ReadOperationsFile(const std::string& a_path, ToolContext& a_context);

/// Reads a list to adjust rows by; its oddities go to the context's notes. It is that of one instrument, so the rows
/// are to be read with ReadOptions::oneSymbol.
HistoryOperations ReadOperationsForRows(const std::string& a_path, ToolContext& a_context);

/// The bytes of the XML form.
std::string OperationsXml(const HistoryOperations& a_operations);

} // namespace kalvento::tool
