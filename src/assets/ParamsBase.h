#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string_view>

class Settings;

/// Which kinds of data of an asset are meant, as a bit mask: offered (AssetParams) or asked for (RequestParams).
/// A plain value without a lock, copied freely between threads. Unknown bits are kept.
class KALVENTO_API ParamsBase {
public:
    static constexpr unsigned int S_kindDataCS = 1U;      ///< Current state, its offers and latest records.
    static constexpr unsigned int S_kindDataRecord = 2U;  ///< Live records.
    static constexpr unsigned int S_kindDataSynchro = 4U; ///< Synchronization.
    static constexpr unsigned int S_kindDataHistory = 8U; ///< History.

    static constexpr std::string_view XML_KIND_DATA = "KindData";

    /// An empty mask.
    ParamsBase() = default;
    explicit ParamsBase(unsigned int a_kindData) : m_kindData(a_kindData) {}
    /// Reads what SerializeState wrote; a missing key gives an empty mask.
    explicit ParamsBase(const Settings& a_settings);
    ParamsBase(const ParamsBase&) = default;
    ParamsBase& operator=(const ParamsBase&) = default;
    ParamsBase(ParamsBase&&) noexcept = default;
    ParamsBase& operator=(ParamsBase&&) noexcept = default;

    virtual ~ParamsBase();
    virtual void SerializeState(Settings& a_settings) const;

    unsigned int GetKindData() const { return m_kindData; }
    void SetKindData(unsigned int a_kindData) { m_kindData = a_kindData; }
    void AddKindData(unsigned int a_kindData) { m_kindData |= a_kindData; }

    /// Current state or live records: either is enough.
    bool IsSetCSAndRecord() const { return (m_kindData & (S_kindDataCS | S_kindDataRecord)) != 0; }
    bool IsSetSynchro() const { return (m_kindData & S_kindDataSynchro) != 0; }
    bool IsSetHistory() const { return (m_kindData & S_kindDataHistory) != 0; }
    /// Anything of today: all but history.
    bool IsSetPresent() const { return IsSetCSAndRecord() || IsSetSynchro(); }
    bool IsSetOnlyHistory() const { return IsSetHistory() && !IsSetPresent(); }

private:
    std::uint32_t m_kindData = 0;
};
