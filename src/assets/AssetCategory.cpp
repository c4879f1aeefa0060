#include "assets/AssetCategory.h"

#include "assets/FeedCode.h"

namespace AssetCategory {

using kalvento::internal::LabelOf;
using kalvento::internal::PackFeedCode;

namespace {

constexpr std::pair<Value, std::wstring_view> S_labels[] = {
    {CategoryShare, L"Akcja"},           {CategoryFuture, L"Kontrakt terminowy"},
    {CategoryIndex, L"Index"},           {CategoryBond, L"Obligacja"},
    {CategoryTracker, L"Tracker (ETF)"}, {CategoryWarrant, L"Warrant / Certyfikat"},
    {CategoryOptionX, L"Opcja"},         {CategoryOptionY, L"Opcja"},
};

} // namespace

Value ToCategoyValue(std::string_view a_code)
{
    const auto value = static_cast<Value>(PackFeedCode(a_code));
    return LabelOf(value, S_labels).empty() ? CategoryUnknown : value;
}

std::wstring ValueToLabel(Value a_value)
{
    return std::wstring(LabelOf(a_value, S_labels));
}

} // namespace AssetCategory
