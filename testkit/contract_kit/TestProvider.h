#pragma once

#include "assets/Asset.h"
#include "assets/AssetAdditProp.h"
#include "assets/AssetParams.h"
#include "assets/AssetsGroup.h"
#include "history_operations/HistoryOperations.h"
#include "modules/ProviderBase.h"
#include "time/NDateTime.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// A provider for tests: it answers with what a test puts into its fields, and counts the questions about series.
class TestProvider : public ProviderBase {
public:
    explicit TestProvider(std::wstring a_name) : ProviderBase(EGenericModuleNone, std::move(a_name)) {}

    std::optional<AssetsGroup> GetAssetsGroupForAssetsGroupId(const AssetsGroupId& a_groupId) override
    {
        const auto found = groups.find(a_groupId.GetId());
        return found != groups.end() ? std::optional(found->second) : std::nullopt;
    }
    std::set<DSProp> GetAssetSeries(const Asset&) override
    {
        ++seriesQuestions;
        return series;
    }
    std::set<DSProp> GetAssetSeriesAlternative(const Asset&) override
    {
        ++seriesQuestions;
        return alternativeSeries;
    }
    AssetParams GetAssetParams(const std::string& a_isin) override
    {
        const auto found = params.find(a_isin);
        return found != params.end() ? found->second : AssetParams();
    }
    std::optional<NDateTime> GetAssetSessionDate(const Asset&) override { return sessionDate; }

    void OnStopWork() override {}
    bool IsStatusVisible() const override { return false; }
    std::wstring GetStatusName() const override { return GetName(); }
    EStatusLevel GetStatusLevel() const override { return EStatusLevelIdle; }
    std::wstring GetStatusLabel() const override { return {}; }
    std::wstring GetStatusToolTip() const override { return {}; }
    EConnectionStatus GetConnectionStatus() const override { return EConnectionStatusDisconnected; }
    void ProviderCommand() override {}
    void SwitchConnection(bool) override {}
    bool StartSubscription(const Subscribe::StartParams&) override { return false; }
    void StopSubscription(const Subscribe::StopParams&) override {}
    std::vector<std::shared_ptr<Asset>> GetAssets() const override { return {}; }
    std::vector<AssetsGroup> GetAssetsGroups() const override { return {}; }
    std::optional<AssetAdditProp> GetAssetAdditProp(const Asset&) override { return std::nullopt; }
    HistoryOperations GetHistoryOperations(const Asset&) override { return {}; }
    bool StartSessionStatistics(IStatisticsSessionReceiver*) override { return false; }
    void StopSessionStatistics(IStatisticsSessionReceiver*) override {}
    std::shared_ptr<Asset> GetAssetByIsin(const std::string&) override { return nullptr; }

    std::map<unsigned int, AssetsGroup> groups; // by number
    std::set<DSProp> series;
    std::set<DSProp> alternativeSeries;
    std::map<std::string, AssetParams> params; // by ISIN
    std::optional<NDateTime> sessionDate;
    int seriesQuestions = 0;
};
