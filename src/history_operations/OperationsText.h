#pragma once

#include "platform/Export.h"

#include <optional>
#include <string>

class HistoryOperations;
class SingleHistoryOperation;

/// The text form of a list of operations, as data sources send it and HistoryOperations::Parse reads it. Safe from any
/// thread.
namespace OperationsText {

/// True where the text form holds the operation without loss: its date is a midnight of the years 1950 to 2049.
KALVENTO_API bool CanHold(const SingleHistoryOperation& a_operation);
/// The text of a list, from which HistoryOperations::Parse makes the same list again. Empty where CanHold is false for
/// one of its operations.
KALVENTO_API std::optional<std::string> Write(const HistoryOperations& a_operations);

} // namespace OperationsText
