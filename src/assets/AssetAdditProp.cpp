#include "assets/AssetAdditProp.h"

#include <utility>

AssetAdditProp::AssetAdditProp(std::wstring a_text1, std::wstring a_text2, std::wstring a_text3,
                               std::wstring a_text4, double a_value, EPrecision a_minPrecision,
                               EPrecision a_maxPrecision, AssetCategory::Value a_category,
                               AssetSegment::Value a_segment, std::optional<NDateTime> a_date)
    : text1(std::move(a_text1)),
      text2(std::move(a_text2)),
      text3(std::move(a_text3)),
      text4(std::move(a_text4)),
      value{a_value, a_minPrecision, a_maxPrecision},
      category(a_category),
      segment(a_segment),
      date(a_date)
{}
