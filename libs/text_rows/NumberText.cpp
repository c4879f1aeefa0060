#include "text_rows/NumberText.h"

#include <fast_float/fast_float.h>

#include <cmath>
#include <system_error>

namespace kalvento::rows {

std::optional<double> ParseNumberText(std::string_view a_text, char a_decimal)
{
    if (a_text.starts_with('+') && !a_text.starts_with("+-"))
        a_text.remove_prefix(1);
    const char* end = a_text.data() + a_text.size();
    double value = 0.0;
    const auto [rest, error] = fast_float::from_chars_advanced(
        a_text.data(), end, value, fast_float::parse_options(fast_float::chars_format::general, a_decimal));
    if (error != std::errc() || rest != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace kalvento::rows
