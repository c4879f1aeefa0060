#pragma once

#include "modules/ProviderBase.h"
#include "provider_kit/IMarketStore.h"

#include <memory>
#include <string>

namespace kalvento::internal {
class StoreEngine;
}

/// A whole provider over a store of numbered rows: a plug-in adds only the store, and ProviderCommand or the login
/// where it needs its own.
///
/// Life: nothing is opened before SwitchConnection(true), which the host calls after Init; that lists the instruments
/// and informs the host (AssetsChanged). Before that there are no assets, and a subscription waits.
/// SwitchConnection(false) and Disconnect close the store; subscriptions wait for the next connection, and so they do
/// while a connection is broken. StopWork or the destructor ends all; a derived class needs no destructor of its own
/// for that.
///
/// What is delivered (docs/provider_kit.md has the details): the history folded to the interval of the request, up to
/// the first row of the synchronization where one is asked for and otherwise through the last row; the synchronization
/// in single ticks, from the start of the window that holds the last row; then each row as a record. Each subscription
/// knows the number of the next row that it is owed, so nothing is left out or repeated, whatever breaks in between. A
/// current state is the session of the last day with rows.
///
/// Two threads of its own: one delivers the past, the other live data, so that a long history doesn't delay the live
/// rows of others.
class StoreProvider : public ProviderBase {
public:
    /// a_store: not null, not open.
    StoreProvider(EGenericModule a_moduleKind, std::wstring a_name, std::unique_ptr<IMarketStore> a_store);
    ~StoreProvider() override;

    bool Init() override;
    void OnStopWork() override;

    bool IsStatusVisible() const override;
    std::wstring GetStatusName() const override;
    EStatusLevel GetStatusLevel() const override;
    std::wstring GetStatusLabel() const override;
    std::wstring GetStatusToolTip() const override;

    EConnectionStatus GetConnectionStatus() const override;
    void SwitchConnection(bool a_connect) override;
    /// Closes the store. There is no login to forget.
    void Disconnect(bool a_forget) override;
    /// Reads the list of instruments again.
    void ProviderCommand() override;

    bool StartSubscription(const Subscribe::StartParams& a_params) override;
    void StopSubscription(const Subscribe::StopParams& a_params) override;

    std::vector<std::shared_ptr<Asset>> GetAssets() const override;
    /// One for each group that an instrument names, by name. A number is made from the name, so it is the same in every
    /// run.
    std::vector<AssetsGroup> GetAssetsGroups() const override;
    std::optional<AssetsGroup> GetAssetsGroupForAssetsGroupId(const AssetsGroupId& a_groupId) override;
    std::shared_ptr<Asset> GetAssetByIsin(const std::string& a_isin) override;
    /// Instruments with live rows offer all kinds; others history and a current state.
    AssetParams GetAssetParams(const std::string& a_isin) override;
    /// The tick shape of the rows.
    std::set<DSProp> GetAssetSeries(const Asset& a_asset) override;
    /// The series of the rows as they are stored.
    std::set<DSProp> GetAssetSeriesAlternative(const Asset& a_asset) override;
    /// The day of the last row.
    std::optional<NDateTime> GetAssetSessionDate(const Asset& a_asset) override;
    /// Long name, market and groups (text 1 to 3), and the day of the last row.
    std::optional<AssetAdditProp> GetAssetAdditProp(const Asset& a_asset) override;
    /// What the store says, kept in the file of operations for when it can't be read.
    HistoryOperations GetHistoryOperations(const Asset& a_asset) override;
    /// False: there are none.
    bool StartSessionStatistics(IStatisticsSessionReceiver* a_receiver) override;
    void StopSessionStatistics(IStatisticsSessionReceiver* a_receiver) override;

    /// Whether the ISIN can be the name of a folder. An instrument whose ISIN can't isn't served: paths are made from
    /// it.
    static bool IsServable(const std::string& a_isin);

protected:
    IMarketStore& GetStore() const;

private:
    std::unique_ptr<kalvento::internal::StoreEngine> m_engine; // the threads and all that they share
};
