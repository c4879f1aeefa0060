#include "assets/AssetCategory.h"

#include "assets/FeedCode.h"

namespace AssetCategory {

namespace {

// Null for a number outside the table.
const wchar_t* LabelOf(Value a_value)
{
    switch (a_value) {
    case CategoryShare:
        return L"Akcja";
    case CategoryFuture:
        return L"Kontrakt terminowy";
    case CategoryIndex:
        return L"Index";
    case CategoryBond:
        return L"Obligacja";
    case CategoryTracker:
        return L"Tracker (ETF)";
    case CategoryWarrant:
        return L"Warrant / Certyfikat";
    case CategoryOptionX:
    case CategoryOptionY:
        return L"Opcja";
    default:
        return nullptr;
    }
}

} // namespace

Value ToCategoyValue(std::string_view a_code)
{
    const auto value = static_cast<Value>(kalvento::internal::PackFeedCode(a_code));
    return LabelOf(value) != nullptr ? value : CategoryUnknown;
}

std::wstring ValueToLabel(Value a_value)
{
    const wchar_t* const label = LabelOf(a_value);
    return label != nullptr ? label : L"";
}

} // namespace AssetCategory
