#pragma once

#include "time/IntervalAndMultiplicity.h"

#include <optional>
#include <string>
#include <string_view>

namespace kalvento::rows {

/// Reads an interval as a user writes it: `tick`, `10tick`, `30s`, `5min`, `1h`, `1d`, `2w`, `1mo`, `1y`, longer
/// English words (`5 minutes`), and the Polish descriptions that the program prints ("5 min.", "Dzienny", "2 dni"),
/// with or without their accents. Blanks and letter case don't matter; no count means 1. The result is always valid
/// (IntervalAndMultiplicity::IsValid). When the result is empty, *a_reason (if given) says what was found and what
/// would be accepted, in UTF-8.
std::optional<IntervalAndMultiplicity> ParseInterval(std::string_view a_text,
                                                     std::string* a_reason = nullptr);

/// The shortest notation that ParseInterval reads back: `tick`, `5min`, `1d`. "none" for a pair that isn't valid.
std::string FormatInterval(IntervalAndMultiplicity a_interval);

/// The notations that ParseInterval takes, for help and refusals.
std::string_view IntervalNotationHelp();

} // namespace kalvento::rows
