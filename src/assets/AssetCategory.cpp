#include "assets/AssetCategory.h"

#include "assets/FeedCode.h"

namespace AssetCategory {

Value ToCategoyValue(std::string_view a_code)
{
    const auto value = static_cast<Value>(kalvento::internal::PackFeedCode(a_code));
    switch (value) {
    case CategoryShare:
    case CategoryFuture:
    case CategoryIndex:
    case CategoryBond:
    case CategoryTracker:
    case CategoryWarrant:
    case CategoryOptionX:
    case CategoryOptionY:
        return value;
    default:
        return CategoryUnknown;
    }
}

std::wstring ValueToLabel(Value a_value)
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
        return {};
    }
}

} // namespace AssetCategory
