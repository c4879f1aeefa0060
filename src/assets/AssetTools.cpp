#include "assets/AssetTools.h"

#include "assets/Asset.h"
#include "assets/AssetAdditProp.h"

#include <string_view>

namespace AssetTools {

namespace {

constexpr std::string_view S_continuation = "FW20";

} // namespace

bool IsTransactionAsset(const Asset& a_asset, const AssetAdditProp& a_properties)
{
    switch (a_properties.segment) {
    case AssetSegment::SegmentInstruments:
        return true;
    case AssetSegment::SegmentDerivatives:
        return a_asset.GetShortName() != S_continuation;
    default:
        return false;
    }
}

} // namespace AssetTools
