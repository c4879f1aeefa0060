#include "history_operations/OperationsText.h"

#include "history_operations/HistoryOperations.h"
#include "time/DateTimeTools.h"

#include <fmt/format.h>

#include <iterator>

namespace {

std::string DateText(const NDateTime& a_date)
{
    return fmt::format("{:02}{:02}{:02}", a_date.GetYear() % 100, a_date.GetMonth(), a_date.GetDay());
}

} // namespace

namespace OperationsText {

bool CanHold(const SingleHistoryOperation& a_operation)
{
    const NDateTime& date = a_operation.GetDate();
    // A well-shaped date that no calendar has (30 February) is kept as it came: hence status and fields, not the day
    // only.
    const auto back = DateTimeTools::ParseDateYYMMDD(DateText(date));
    return back && back->ToOle().GetStatus() == date.ToOle().GetStatus() &&
           back->ToDouble() == date.ToDouble() && back->GetYear() == date.GetYear() &&
           date.GetAbsoluteTime() == 0 && date.GetMilliSec() == 0;
}

std::optional<std::string> Write(const HistoryOperations& a_operations)
{
    std::string text = fmt::format("{}\n", a_operations.Version());
    for (const SingleHistoryOperation& operation : a_operations) {
        if (!CanHold(operation))
            return std::nullopt;
        // The shortest number that reads back to the same bits.
        fmt::format_to(std::back_inserter(text), "{},{},{},{}\n", operation.GetId(),
                       DateText(operation.GetDate()), static_cast<int>(operation.GetType()),
                       operation.GetStoredFactor());
    }
    return text;
}

} // namespace OperationsText
