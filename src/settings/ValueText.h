#pragma once

#include "platform/CRect.h"
#include "platform/CSize.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The text of a value in a Settings node, and values read from a text. Plain functions of the bytes: no locale.
namespace kalvento::internal::ValueText {

std::string Of(bool a_value);
std::string Of(std::int64_t a_value);
std::string Of(std::uint64_t a_value);
/// The shortest that reads back to the same bits: "0.1", "-0", "inf", "nan" for the usual NaN and
/// "nan(0x7ff0000000000001)" with all 64 bits for any other.
std::string Of(double a_value);
std::string Of(const CRect& a_value);
std::string Of(const CSize& a_value);

/// All take the text whole, without blanks around it; a fraction loses what follows the point; "true" is 1 and "false"
/// 0. Zero where there is no number or it is out of bounds.
std::int64_t ReadSigned(std::string_view a_text, std::int64_t a_lowest, std::int64_t a_highest);
std::uint64_t ReadUnsigned(std::string_view a_text, std::uint64_t a_highest);
/// Zero also where the number is too great or too small for a double.
double ReadDouble(std::string_view a_text);
/// Whole numbers separated by commas, blanks after the commas allowed; all zero where anything else is found.
CRect ReadRect(std::string_view a_text);
CSize ReadSize(std::string_view a_text);

/// Cuts the fraction off; zero out of bounds and for NaN.
std::int64_t ToSigned(double a_value, std::int64_t a_lowest, std::int64_t a_highest);
std::uint64_t ToUnsigned(double a_value, std::uint64_t a_highest);

} // namespace kalvento::internal::ValueText
