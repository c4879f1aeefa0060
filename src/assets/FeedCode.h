#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

namespace kalvento::internal {

/// The number that a code of the data feed packs into; 0 for an empty code and for the text that means a missing one.
/// More than four characters raise std::length_error.
unsigned int PackFeedCode(std::string_view a_code);

/// The text for the user; empty for a number outside the table.
template<class Value, std::size_t Count>
std::wstring_view LabelOf(Value a_value, const std::pair<Value, std::wstring_view> (&a_labels)[Count])
{
    const auto* const found =
        std::ranges::find(a_labels, a_value, &std::pair<Value, std::wstring_view>::first);
    return found == std::end(a_labels) ? std::wstring_view() : found->second;
}

} // namespace kalvento::internal
