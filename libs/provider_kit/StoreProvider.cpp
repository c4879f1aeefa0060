#include "provider_kit/StoreProvider.h"

#include "assets/Asset.h"
#include "assets/AssetAdditProp.h"
#include "assets/AssetParams.h"
#include "assets/AssetsGroup.h"
#include "provider_kit/StoreEngine.h"
#include "series/TickShape.h"
#include "velo/String.h"

#include <utility>

using kalvento::internal::StoreEngine;

StoreProvider::StoreProvider(EGenericModule a_moduleKind, std::wstring a_name,
                             std::unique_ptr<IMarketStore> a_store)
    : ProviderBase(a_moduleKind, std::move(a_name)),
      m_engine(std::make_unique<StoreEngine>(*this, std::move(a_store)))
{}

StoreProvider::~StoreProvider()
{
    m_engine->End();
}

bool StoreProvider::Init()
{
    if (!ProviderBase::Init())
        return false;
    m_engine->GetParts().keepsOperations = true;
    return true;
}

void StoreProvider::OnStopWork()
{
    m_engine->End();
}

bool StoreProvider::IsStatusVisible() const
{
    return true;
}

std::wstring StoreProvider::GetStatusName() const
{
    return GetName();
}

EStatusLevel StoreProvider::GetStatusLevel() const
{
    const bool hasFaults = m_engine->GetParts().faults.IsAny();
    switch (m_engine->GetParts().connection.GetStatus()) {
    case EConnectionStatusConnected:
        return hasFaults ? EStatusLevelProblem : EStatusLevelGood;
    case EConnectionStatusConnecting:
        return hasFaults || !m_engine->GetParts().connection.GetBreakReason().empty() ? EStatusLevelProblem
                                                                                      : EStatusLevelWorking;
    case EConnectionStatusDisconnected:
        break;
    }
    return EStatusLevelIdle;
}

std::wstring StoreProvider::GetStatusLabel() const
{
    switch (m_engine->GetParts().connection.GetStatus()) {
    case EConnectionStatusConnected:
        return L"połączony";
    case EConnectionStatusConnecting:
        return L"łączenie…";
    case EConnectionStatusDisconnected:
        break;
    }
    return L"rozłączony";
}

std::wstring StoreProvider::GetStatusToolTip() const
{
    const kalvento::internal::StoreParts& parts = m_engine->GetParts();
    std::wstring text = GetName() + L": " + GetStatusLabel() + L"; Walory: " +
                        std::to_wstring(parts.instruments.Get()->GetAssets().size());
    if (const std::wstring reason = parts.connection.GetBreakReason();
        !reason.empty() && reason != GetStatusLabel())
        text += L"\n" + reason;
    return text + parts.faults.GetText();
}

EConnectionStatus StoreProvider::GetConnectionStatus() const
{
    return m_engine->GetParts().connection.GetStatus();
}

void StoreProvider::SwitchConnection(bool a_connect)
{
    m_engine->SwitchConnection(a_connect);
}

void StoreProvider::Disconnect(bool /*a_forget*/)
{
    m_engine->SwitchConnection(false);
}

void StoreProvider::ProviderCommand()
{
    m_engine->InstrumentsChanged();
}

bool StoreProvider::StartSubscription(const Subscribe::StartParams& a_params)
{
    return m_engine->Start(a_params);
}

void StoreProvider::StopSubscription(const Subscribe::StopParams& a_params)
{
    m_engine->GetParts().book.Stop(a_params);
}

std::vector<std::shared_ptr<Asset>> StoreProvider::GetAssets() const
{
    return m_engine->GetParts().instruments.Get()->GetAssets();
}

std::vector<AssetsGroup> StoreProvider::GetAssetsGroups() const
{
    return m_engine->GetParts().instruments.Get()->GetGroups();
}

std::optional<AssetsGroup> StoreProvider::GetAssetsGroupForAssetsGroupId(const AssetsGroupId& a_groupId)
{
    const auto instruments = m_engine->GetParts().instruments.Get();
    for (const AssetsGroup& group : instruments->GetGroups())
        if (group.GetId().GetId() == a_groupId.GetId())
            return group;
    return std::nullopt;
}

std::shared_ptr<Asset> StoreProvider::GetAssetByIsin(const std::string& a_isin)
{
    return m_engine->GetParts().instruments.Get()->FindAsset(a_isin);
}

AssetParams StoreProvider::GetAssetParams(const std::string& a_isin)
{
    const auto instruments = m_engine->GetParts().instruments.Get();
    const StoreInstrument* const instrument = instruments->Find(a_isin);
    if (instrument == nullptr)
        return {};
    constexpr unsigned int live = ParamsBase::S_kindDataSynchro | ParamsBase::S_kindDataRecord;
    const unsigned int kinds = ParamsBase::S_kindDataCS | (instrument->live ? live : 0U);
    const auto days = m_engine->GetParts().instruments.GetDays(a_isin);
    if (!days)
        return AssetParams(kinds);
    return {kinds | ParamsBase::S_kindDataHistory,
            instrument->interval.GetMultiplicity(),
            {{instrument->interval.GetInterval(), *days}}};
}

std::set<DSProp> StoreProvider::GetAssetSeries(const Asset& a_asset)
{
    return kalvento::internal::TickShape(GetAssetSeriesAlternative(a_asset));
}

std::set<DSProp> StoreProvider::GetAssetSeriesAlternative(const Asset& a_asset)
{
    const auto instruments = m_engine->GetParts().instruments.Get();
    const StoreInstrument* const instrument = instruments->Find(a_asset.GetIsin());
    return instrument != nullptr ? instrument->series : std::set<DSProp>();
}

std::optional<NDateTime> StoreProvider::GetAssetSessionDate(const Asset& a_asset)
{
    const auto days = m_engine->GetParts().instruments.GetDays(a_asset.GetIsin());
    return days ? std::optional(days->GetDates().to) : std::nullopt;
}

std::optional<AssetAdditProp> StoreProvider::GetAssetAdditProp(const Asset& a_asset)
{
    const auto instruments = m_engine->GetParts().instruments.Get();
    const StoreInstrument* const instrument = instruments->Find(a_asset.GetIsin());
    if (instrument == nullptr)
        return std::nullopt;
    std::wstring groups;
    for (const std::wstring& group : instrument->groups)
        groups += (groups.empty() ? L"" : L", ") + group;
    AssetAdditProp properties;
    properties.text1 = VeloTools::String::AnsiToWide(instrument->longName);
    properties.text2 = VeloTools::String::AnsiToWide(instrument->market);
    properties.text3 = std::move(groups);
    properties.date = GetAssetSessionDate(a_asset);
    return properties;
}

HistoryOperations StoreProvider::GetHistoryOperations(const Asset& a_asset)
{
    const auto instruments = m_engine->GetParts().instruments.Get();
    return instruments->Find(a_asset.GetIsin()) != nullptr
               ? m_engine->GetParts().ReadOperations(a_asset.GetIsin())
               : HistoryOperations();
}

bool StoreProvider::StartSessionStatistics(IStatisticsSessionReceiver* /*a_receiver*/)
{
    return false;
}

void StoreProvider::StopSessionStatistics(IStatisticsSessionReceiver* /*a_receiver*/) {}

bool StoreProvider::IsServable(const std::string& a_isin)
{
    return kalvento::internal::InstrumentList::IsServable(a_isin);
}

IMarketStore& StoreProvider::GetStore() const
{
    return *m_engine->GetParts().store;
}
