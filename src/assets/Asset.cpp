#include "assets/Asset.h"

#include "assets/AssetParams.h"
#include "modules/IAppMediator.h"
#include "modules/PluginBase.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "series/DSProp.h"
#include "settings/Settings.h"
#include "time/KalventoException.h"
#include "velo/Log.h"
#include "velo/String.h"

#include <boost/json.hpp>
#include <fmt/printf.h>

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t S_jsonMembers = 5;

// Saved assets come back without a provider when its module is gone, and lists of them are still compared and sorted.
const std::wstring& NameOf(const ProviderBase* a_provider)
{
    return a_provider != nullptr ? a_provider->GetName() : VeloTools::String::EmptyWString();
}

ProviderBase* FindProvider(const std::wstring& a_name)
{
    return PluginBase::Sm_pMediator->GetProviderByName(a_name);
}

const std::string& TextOf(const Settings& a_settings)
{
    return a_settings;
}

std::string_view TextOf(const boost::json::value& a_json, std::string_view a_key)
{
    return a_json.as_object().at(a_key).as_string();
}

} // namespace

Asset::Asset(ProviderBase* a_provider, std::string a_shortName, std::string a_longName, std::string a_market,
             std::string a_isin)
    : m_provider(a_provider),
      m_shortName(std::move(a_shortName)),
      m_longName(std::move(a_longName)),
      m_market(std::move(a_market)),
      m_isin(std::move(a_isin))
{}

Asset::Asset(const Settings& a_settings)
    : m_provider(FindProvider(a_settings[XML_PROVIDER])),
      m_shortName(TextOf(a_settings[XML_SHORT_NAME])),
      m_longName(TextOf(a_settings[XML_LONG_NAME])),
      m_market(TextOf(a_settings[XML_MARKET])),
      m_isin(TextOf(a_settings[XML_ISIN]))
{}

Asset::Asset(const boost::json::value& a_json)
    : m_provider(FindProvider(VeloTools::String::Utf8ToWide(TextOf(a_json, XML_PROVIDER)))),
      m_shortName(TextOf(a_json, XML_SHORT_NAME)),
      m_longName(TextOf(a_json, XML_LONG_NAME)),
      m_market(TextOf(a_json, XML_MARKET)),
      m_isin(TextOf(a_json, XML_ISIN))
{}

Asset::~Asset() = default;

bool Asset::operator==(const Asset& a_other) const
{
    return m_isin == a_other.m_isin && m_market == a_other.m_market &&
           NameOf(m_provider) == NameOf(a_other.m_provider);
}

bool Asset::operator<(const Asset& a_other) const
{
    if (const int isin = m_isin.compare(a_other.m_isin); isin != 0)
        return isin < 0;
    if (const int market = m_market.compare(a_other.m_market); market != 0)
        return market < 0;
    return NameOf(m_provider) < NameOf(a_other.m_provider);
}

bool Asset::IsEqual(const Asset& a_other) const
{
    // Long name and market are compared with the other's short name: plug-ins rely on this answer to tell instruments
    // with a single name from all others.
    return m_isin == a_other.m_isin && m_shortName == a_other.m_shortName &&
           m_longName == a_other.m_shortName && m_market == a_other.m_shortName &&
           NameOf(m_provider) == NameOf(a_other.m_provider);
}

AssetParams Asset::GetParams() const
{
    return m_provider->GetAssetParams(m_isin);
}

std::optional<NDateTime> Asset::GetSessionDate() const
{
    if (m_provider == nullptr) {
        VeloTools::Log::Instance().Write("Asset::GetSessionDate", __LINE__,
                                         fmt::sprintf("Walor: %s nie posiada dostawcy"_cp1250, m_shortName));
        return std::nullopt;
    }
    return m_provider->GetAssetSessionDate(*this);
}

bool Asset::RecordHasSeries(ESeriesId a_series) const
{
    return HaseSeries(m_provider->GetAssetSeries(*this), {a_series});
}

bool Asset::HistoryRecordHasSeries(const std::set<ESeriesId>& a_series, bool a_alternative) const
{
    if (m_provider == nullptr)
        throw KalventoException("Asset::HistoryRecordHasSeries", __LINE__, "Nie ustawiono dostawcy"_cp1250);
    if (a_series.empty())
        return true;
    return HaseSeries(a_alternative ? m_provider->GetAssetSeriesAlternative(*this)
                                    : m_provider->GetAssetSeries(*this),
                      a_series);
}

void Asset::SerializeState(Settings& a_settings) const
{
    a_settings[XML_PROVIDER] = NameOf(m_provider);
    a_settings[XML_SHORT_NAME] = m_shortName;
    a_settings[XML_LONG_NAME] = m_longName;
    a_settings[XML_MARKET] = m_market;
    a_settings[XML_ISIN] = m_isin;
}

boost::json::value Asset::Serialize() const
{
    boost::json::object members;
    members.reserve(S_jsonMembers);
    members[XML_PROVIDER] = VeloTools::String::WideToJsonUtf8(NameOf(m_provider));
    members[XML_SHORT_NAME] = m_shortName;
    members[XML_LONG_NAME] = m_longName;
    members[XML_MARKET] = m_market;
    members[XML_ISIN] = m_isin;
    return members;
}

bool Asset::HaseSeries(const std::set<DSProp>& a_offered, const std::set<ESeriesId>& a_wanted)
{
    // A linear scan: the set orders indicators by their labels, so it can't be searched by identifier.
    return std::all_of(a_wanted.begin(), a_wanted.end(), [&](ESeriesId a_series) {
        return std::any_of(a_offered.begin(), a_offered.end(),
                           [&](const DSProp& a_property) { return a_property.GetSeriesID() == a_series; });
    });
}
