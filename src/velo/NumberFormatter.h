#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"
#include "velo/EPrecision.h"

#include <string>
#include <string_view>

namespace VeloTools {

/// Numbers as a Polish reader expects them: a comma before the decimal places, digits in groups of three with U+00A0
/// between ("1 234 567,50"), "-" before a negative number. No locale changes that.
class KALVENTO_API NumberFormatter {
public:
    NumberFormatter() = default;

    /// Writes a_value into a_result, followed by a_text as is (a unit; empty for none).
    ///  - The number has as many places as it needs, at least a_minimum and at most a_maximum; -1 sets no lower bound
    ///    and no upper one. It needs those that read back to the same double: 0.1 needs one place. A minimum above the
    ///    maximum gives the maximum.
    ///  - Rounding takes the decimal number that the double is written as, halves away from zero: 1.005 with two
    ///    places is 1,01.
    ///  - What rounds to zero has no sign. NaN is "-", infinities are U+221E with their sign.
    ///  - With a font and a width in pixels, places are dropped down to the minimum until the text fits. Without a
    ///    window system, which alone can measure, with a null font or a width of 0 nothing is dropped.
    void SlowFormat(std::wstring& a_result, std::wstring_view a_text, HFONT a_font, unsigned int a_width,
                    double a_value, EPrecision a_minimum, EPrecision a_maximum) const;

    /// The window system's measure: width of a text in pixels. Null takes it back. Safe from any thread.
    using TextWidth = unsigned int (*)(std::wstring_view a_text, HFONT a_font);
    static void SetTextWidth(TextWidth a_textWidth);
};

} // namespace VeloTools
