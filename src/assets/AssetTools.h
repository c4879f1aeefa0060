#pragma once

#include "platform/Export.h"

class Asset;
struct AssetAdditProp;

namespace AssetTools {

/// Whether orders can be placed on the asset: instruments and derivatives, never indices. The one exception is the
/// derivative of the short name "FW20", a continuation series that is quoted beside the contracts it is made of.
KALVENTO_API bool IsTransactionAsset(const Asset& a_asset, const AssetAdditProp& a_properties);

} // namespace AssetTools
