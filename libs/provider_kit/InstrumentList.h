#pragma once

#include "assets/Asset.h"
#include "assets/AssetsGroup.h"
#include "provider_kit/IMarketStore.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class ProviderBase;

namespace kalvento::internal {

/// What a provider offers at one time. Never changed once it is made, so it is shared between threads.
class InstrumentList {
public:
    InstrumentList() = default; ///< Nothing.
    /// Instruments with a fault, whose ISIN IsServable refuses, that come a second time, that have no Price or an
    /// impossible interval, and live ones whose rows aren't single ticks are left out with a line in the log.
    InstrumentList(ProviderBase& a_provider, std::vector<StoreInstrument>&& a_instruments);

    /// StoreProvider::IsServable.
    static bool IsServable(const std::string& a_isin);
    /// Null for one that isn't there.
    const StoreInstrument* Find(const std::string& a_isin) const;
    std::shared_ptr<Asset> FindAsset(const std::string& a_isin) const;
    const std::vector<std::shared_ptr<Asset>>& GetAssets() const { return m_assets; }
    const std::vector<AssetsGroup>& GetGroups() const { return m_groups; }
    /// What was left out and why, a line each, for the user.
    const std::vector<std::wstring>& GetLeftOut() const { return m_leftOut; }

private:
    struct Entry {
        StoreInstrument instrument;
        std::shared_ptr<Asset> asset;
    };

    std::wstring FindFault(const StoreInstrument& a_instrument) const;

    std::map<std::string, Entry> m_entries; // by ISIN
    std::vector<std::shared_ptr<Asset>> m_assets;
    std::vector<AssetsGroup> m_groups; // by name, their numbers from 1 on
    std::vector<std::wstring> m_leftOut;
};

} // namespace kalvento::internal
