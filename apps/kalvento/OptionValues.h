#pragma once

#include "time/IntervalAndMultiplicity.h"

#include <cstdint>
#include <string>

/// Values that several commands take as options. A text that can't be read is refused by RefuseOption, which names the
/// option and what would be accepted.
namespace kalvento::tool {

/// The value of --interval.
IntervalAndMultiplicity IntervalOption(const std::string& a_text);

/// A day, as days since 1970-01-01. a_option: its name, "--day".
std::int64_t DayOption(const std::string& a_text, const char* a_option);

} // namespace kalvento::tool
