#pragma once

#include "platform/Export.h"
#include "time/EInterval.h"

#include <cstdint>
#include <string_view>

class Settings;

/// A unit and how many of them make one step: 5 minutes, 1 tick. A plain value of two fields, pass it by value.
/// Nothing is checked on the way in and nothing raises: test a pair from outside by IsValid.
class KALVENTO_API IntervalAndMultiplicity {
public:
    static constexpr std::string_view XML_INTERVAL = "Interval";
    static constexpr std::string_view XML_MULTIPLICITY = "Multipl";

    /// The empty value: both fields 0.
    constexpr IntervalAndMultiplicity() = default;
    constexpr IntervalAndMultiplicity(EInterval a_interval, unsigned int a_multiplicity)
        : m_interval(a_interval), m_multiplicity(a_multiplicity)
    {}
    /// Reads what SerializeState wrote; a missing key gives 0.
    explicit IntervalAndMultiplicity(const Settings& a_settings);

    void SerializeState(Settings& a_settings) const;

    constexpr void Set(EInterval a_interval, unsigned int a_multiplicity)
    {
        m_interval = a_interval;
        m_multiplicity = a_multiplicity;
    }
    constexpr void Clear() { Set(EIntervalEmpty, 0); }

    constexpr EInterval GetInterval() const { return m_interval; }
    constexpr unsigned int GetMultiplicity() const { return m_multiplicity; }

    constexpr bool Equals(IntervalAndMultiplicity a_other) const
    {
        return Equals(a_other.m_interval, a_other.m_multiplicity);
    }
    constexpr bool Equals(EInterval a_interval, unsigned int a_multiplicity) const
    {
        return m_interval == a_interval && m_multiplicity == a_multiplicity;
    }

    constexpr bool IsEmpty() const { return Equals(EIntervalEmpty, 0); }
    /// A unit with a multiplicity from 1 to the unit's greatest.
    bool IsValid() const;
    constexpr bool IsTick() const { return m_interval == EIntervalTick && m_multiplicity > 0; }
    constexpr bool IsSingleTick() const { return Equals(EIntervalTick, 1); }
    /// At least two ticks in a step.
    constexpr bool IsNTick() const { return IsNTick(m_interval, m_multiplicity); }
    static constexpr bool IsNTick(EInterval a_interval, unsigned int a_multiplicity)
    {
        return a_interval == EIntervalTick && a_multiplicity >= 2;
    }
    /// Candles of time, within the unit's limit. Several ticks in a step are not aggregated by this test.
    bool IsAggregated() const;
    /// Days or coarser; the multiplicity doesn't matter.
    constexpr bool IsEod() const { return m_interval >= EIntervalDay; }

private:
    EInterval m_interval = EIntervalEmpty;
    std::uint32_t m_multiplicity = 0; // 0 only in the empty value
};
