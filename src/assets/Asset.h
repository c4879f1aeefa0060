#pragma once

#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "time/NDateTime.h"

#include <boost/json/fwd.hpp>

#include <optional>
#include <set>
#include <string>
#include <string_view>

class AssetParams;
class DSProp;
class ProviderBase;
class Settings;

/// The handle on one quoted instrument: which provider serves it, under which names and on which market. It is the key
/// under which everything else is asked for, so it is small and passed by value; the provider knows everything else. A
/// value type: copies are independent, one thread at a time; a moved-from asset keeps its provider.
///
/// The texts are opaque bytes, compared byte by byte and stored without any conversion of encoding. The identity is
/// ISIN, market and name of the provider, in this order. A provider is a module and outlives every asset that names it.
class KALVENTO_API Asset {
public:
    static constexpr std::string_view XML_PROVIDER = "Provider";
    static constexpr std::string_view XML_SHORT_NAME = "ShortName";
    static constexpr std::string_view XML_LONG_NAME = "LongName";
    static constexpr std::string_view XML_MARKET = "Market";
    static constexpr std::string_view XML_ISIN = "Isin";

    /// a_provider may be null: the asset is valid, but nobody serves it.
    Asset(ProviderBase* a_provider, std::string a_shortName, std::string a_longName, std::string a_market,
          std::string a_isin);
    /// Reads what SerializeState wrote; missing keys are empty texts. The host looks the provider up by its name, so
    /// the mediator must be set; a name that the host doesn't know leaves the provider null.
    explicit Asset(const Settings& a_settings);
    /// Reads what Serialize gave. The host looks the provider up as above. Anything but an object with the five texts
    /// raises the JSON library's exception: std::invalid_argument, "not an object" or "not a string", or
    /// std::out_of_range where a key is missing.
    explicit Asset(const boost::json::value& a_json);
    Asset(const Asset& a_other) = default;
    Asset(Asset&& a_other) noexcept = default;
    Asset& operator=(const Asset& a_other) = default;
    Asset& operator=(Asset&& a_other) noexcept = default;
    virtual ~Asset();

    ProviderBase* GetProvider() const { return m_provider; }
    const std::string& GetShortName() const { return m_shortName; }
    const std::string& GetLongName() const { return m_longName; }
    const std::string& GetMarket() const { return m_market; }
    const std::string& GetIsin() const { return m_isin; }

    bool IsProviderSet() const { return m_provider != nullptr; }
    bool NamesAreEqual() const { return m_shortName == m_longName; }
    bool IsFromMarket(const std::string& a_market) const { return m_market == a_market; }
    bool HasTheSameIsinAndMarket(const std::string& a_isin, const std::string& a_market) const
    {
        return m_isin == a_isin && m_market == a_market;
    }
    bool HasTheSameShortNameAndMarket(std::string_view a_shortName, std::string_view a_market) const
    {
        return m_shortName == a_shortName && m_market == a_market;
    }

    /// The identity alone: short and long names take no part. A provider that is not set counts as one without a name.
    bool operator==(const Asset& a_other) const;
    bool operator!=(const Asset& a_other) const { return !(*this == a_other); }
    /// The identity, compared in its order: ISIN and market as bytes, then the provider's name.
    bool operator<(const Asset& a_other) const;
    /// Equal ISINs, short names and providers, and this long name and this market both equal to the other's short name.
    /// So an asset whose names differ is not even equal to its own copy: a full comparison is operator== with the
    /// getters.
    bool IsEqual(const Asset& a_other) const;

    /// Kept for old callers; does nothing.
    void DumpToTrace() const {}

    // The questions below are the provider's to answer, on the caller's thread.

    /// What the provider can deliver for the asset. The provider must be set.
    AssetParams GetParams() const;
    /// The date of the current session. Without a provider: empty, with a line in the log.
    std::optional<NDateTime> GetSessionDate() const;
    /// Whether current records of the asset hold that series. The provider must be set.
    bool RecordHasSeries(ESeriesId a_series) const;
    /// Whether the history of the asset holds all of these series; a_alternative asks for the provider's other set.
    /// An empty list is always held, and the provider is not asked. Without a provider it raises KalventoException,
    /// even then.
    bool HistoryRecordHasSeries(const std::set<ESeriesId>& a_series, bool a_alternative) const;

    /// Writes the five keys: the name of the provider as wide text, empty without one, the others as narrow text.
    void SerializeState(Settings& a_settings) const;
    /// An object of the same five keys, all texts: the name of the provider in UTF-8, the others byte for byte.
    boost::json::value Serialize() const;

protected:
    /// Whether every wanted series is among the offered ones.
    static bool HaseSeries(const std::set<DSProp>& a_offered, const std::set<ESeriesId>& a_wanted);

private:
    ProviderBase* m_provider; // not owned, may be null
    std::string m_shortName;
    std::string m_longName;
    std::string m_market;
    std::string m_isin;
};
