#include "kalvento/OptionValues.h"

#include "kalvento/CommandLine.h"
#include "kalvento/ToolContext.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/TimeText.h"

namespace kalvento::tool {

IntervalAndMultiplicity IntervalOption(const std::string& a_text)
{
    std::string reason;
    const auto interval = ParseInterval(a_text, &reason);
    if (!interval)
        RefuseOption("--interval", reason);
    return *interval;
}

std::int64_t DayOption(const std::string& a_text, const char* a_option)
{
    const auto day = ParseDateText(a_text);
    if (!day)
        RefuseOption(a_option, "found \"" + a_text + "\", expected a day as 2024-01-02");
    return *day;
}

} // namespace kalvento::tool
