#pragma once

#include "assets/AssetCategory.h"
#include "assets/AssetSegment.h"
#include "platform/Export.h"
#include "series/ValueWithPrecision.h"
#include "time/NDateTime.h"
#include "velo/EPrecision.h"

#include <optional>
#include <string>

/// What else a provider tells about an asset. A plain value, handed from provider to consumer. The library reads only
/// the segment; the provider decides what the texts, the value and the date mean.
struct KALVENTO_API AssetAdditProp {
    AssetAdditProp() = default;
    /// a_minPrecision and a_maxPrecision belong to a_value.
    AssetAdditProp(std::wstring a_text1, std::wstring a_text2, std::wstring a_text3, std::wstring a_text4,
                   double a_value, EPrecision a_minPrecision, EPrecision a_maxPrecision,
                   AssetCategory::Value a_category, AssetSegment::Value a_segment,
                   std::optional<NDateTime> a_date);

    /// Instruments and indices.
    bool IsFromCashMarket() const
    {
        return segment == AssetSegment::SegmentInstruments || segment == AssetSegment::SegmentIndices;
    }
    /// Derivatives.
    bool IsFromContractMarket() const { return segment == AssetSegment::SegmentDerivatives; }

    std::wstring text1;
    std::wstring text2;
    std::wstring text3;
    std::wstring text4;
    ValueWithPrecision value;
    AssetCategory::Value category = AssetCategory::CategoryUnknown;
    AssetSegment::Value segment = AssetSegment::SegmentUnknown;
    std::optional<NDateTime> date;
};
