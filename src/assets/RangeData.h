#pragma once

#include "platform/Export.h"
#include "time/NDateTime.h"

#include <string_view>

class Settings;

/// A range of dates; both ends belong to it. The setters keep whole days, while the constructors keep what they are
/// given, times of day and wrong order included: test a range from outside by Validate. A plain value without a lock.
class KALVENTO_API RangeData {
public:
    struct Dates {
        NDateTime from;
        NDateTime to;
    };

    static constexpr std::string_view XML_FROM = "From";
    static constexpr std::string_view XML_TO = "To";

    /// From the all-zero time to 2099-12-31.
    RangeData();
    /// To 2099-12-31.
    explicit RangeData(const NDateTime& a_from);
    RangeData(const NDateTime& a_from, const NDateTime& a_to) : m_from(a_from), m_to(a_to) {}
    explicit RangeData(const Dates& a_dates) : m_from(a_dates.from), m_to(a_dates.to) {}
    /// Reads what SerializeState wrote; what is missing there reads as the all-zero time.
    explicit RangeData(const Settings& a_settings);

    Dates GetDates() const { return {m_from, m_to}; }
    /// Takes both ends without their times of day. False, with nothing changed, where one of them is no valid date or
    /// a_from is the later day.
    bool SetDates(const NDateTime& a_from, const NDateTime& a_to);
    bool SetDates(const Dates& a_dates) { return SetDates(a_dates.from, a_dates.to); }
    /// Takes the day. False, with nothing changed, for an invalid date and for one later than the present end.
    bool SetDateFrom(const NDateTime& a_from);
    /// Takes the day. False, with nothing changed, for an invalid date and for one before the present beginning.
    bool SetDateTo(const NDateTime& a_to);

    /// Both ends are valid, and the beginning doesn't come after the end.
    bool Validate() const { return m_from.IsValid() && m_to.IsValid() && m_from <= m_to; }
    /// Narrows a_other to what both ranges have in common. Ranges that don't meet leave a_other with its beginning
    /// after its end, which Validate detects.
    void GetMinRangeData(RangeData& a_other) const;

    /// Keeps the date and the counter of each end.
    void SerializeState(Settings& a_settings) const;

private:
    NDateTime m_from;
    NDateTime m_to;
};
