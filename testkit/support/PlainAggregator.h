#pragma once

#include "aggregation/AggrBase.h"
#include "aggregation/AggrWindowsFactory.h"
#include "aggregation/EAggrTimeResult.h"
#include "aggregation/EAggrType.h"
#include "platform/CodePage.h"
#include "time/EInterval.h"
#include "time/NDateTime.h"

#include <bit>
#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

/// The rules of folding in their plainest form, one row at a time, with scratch doubles, field pointers and a virtual
/// window call a row: what the engine's fast roads are measured and checked against. Shares only the window objects
/// with it.
namespace plain {

/// The number of the window of a time, worked out from the calendar.
inline int WindowNumber(EInterval a_interval, unsigned int a_multiplicity, const NDateTime& a_time)
{
    using namespace std::chrono;
    const auto orFirst = [](unsigned long a_slot, unsigned long a_slots) {
        return a_slot < a_slots ? a_slot : 0;
    };
    switch (a_interval) {
    case EIntervalSecond:
        return static_cast<int>(
            orFirst((a_time.GetHour() * 60 + a_time.GetMinute()) * 60 + a_time.GetSecond(), 86400) /
            a_multiplicity);
    case EIntervalMinute:
        return static_cast<int>(orFirst(a_time.GetHour() * 60 + a_time.GetMinute(), 1440) / a_multiplicity);
    case EIntervalHour:
        return static_cast<int>(orFirst(a_time.GetHour(), 24) / a_multiplicity);
    case EIntervalDay:
        return static_cast<int>((static_cast<std::uint32_t>(a_time.GetDayOfYear()) - 1U) / a_multiplicity);
    case EIntervalWeek: {
        const auto place = static_cast<int>(orFirst(a_time.GetDayOfYear() - 1, 366));
        // Mondays after 1 January up to this day.
        const sys_days newYear{year(static_cast<int>(a_time.GetYear())) / January / 1};
        const int toMonday = static_cast<int>((Monday - weekday(newYear)).count());
        const int firstMonday = toMonday == 0 ? 7 : toMonday;
        return (place < firstMonday ? 0 : (place - firstMonday) / 7 + 1) / static_cast<int>(a_multiplicity);
    }
    case EIntervalMonth:
        return static_cast<int>((static_cast<std::uint32_t>(a_time.GetMonth()) - 1U) / a_multiplicity);
    case EIntervalYear:
        return static_cast<int>(a_time.GetYear() / a_multiplicity);
    default:
        return -1;
    }
}

class Aggregator {
public:
    Aggregator(EInterval a_interval, unsigned short a_multiplicity, EAggrTimeResult a_timeResult,
               std::vector<EAggrType> a_types)
        : m_interval(a_interval),
          m_multiplicity(a_multiplicity),
          m_timeResult(a_timeResult),
          m_types(std::move(a_types)),
          m_values(m_types.size() + 3)
    {
        Reset();
    }

    void Reset()
    {
        m_window = AggrWindowsFactory::GetAggrWindowClass(m_interval, m_multiplicity, m_timeResult);
        m_hasLast = false;
        m_windowTime = NDateTime();
    }

    /// m_values: open, high, low, close, others, as the row has them.
    bool SumWithWindow(NDateTime& a_time, const std::vector<double*>& a_fields, bool a_useOhl)
    {
        const bool late = m_timeResult != EMetaStockWindowEnd && m_timeResult != EWindowBorder && m_hasLast &&
                          a_time < m_last;
        if (late) {
            a_time = m_windowTime;
            for (std::size_t field = 0; field < a_fields.size(); ++field)
                *a_fields[field] = m_values[field];
            return true;
        }
        m_last = a_time;
        // A last time of all zero counts as none; one of minus zero, as garbage brings it, is a time.
        m_hasLast = std::bit_cast<std::uint64_t>(a_time.ToDouble()) != 0 || !a_time.IsValid() ||
                    a_time.GetYear() != 0 || a_time.GetMonth() != 0 || a_time.GetDay() != 0 ||
                    a_time.GetAbsoluteTime() != 0 || a_time.GetMilliSec() != 0 || a_time.GetDayOfYear() != 0;
        const bool inWindow = m_window->IsInCurrentWindow(a_time);
        if (!inWindow)
            Stamp(a_time);
        if (m_timeResult != ELastRecordTime)
            a_time = m_windowTime;

        const double close = *a_fields[3];
        for (std::size_t field = 0; field < a_fields.size(); ++field) {
            const double value = field < 3 && !a_useOhl ? close : *a_fields[field];
            double& kept = m_values[field];
            const EAggrType type = field <= 3 ? m_types[0] : m_types[field - 3];
            if (inWindow && type > EAggrTypeLast)
                throw std::runtime_error("Wyjątek AggrValue! Nieznany typ agregacji"_cp1250);
            const bool last = !inWindow || type == EAggrTypeOhlcLast || type == EAggrTypeLast;
            if (!last && (type == EAggrTypeOhlcSum || type == EAggrTypeSum))
                kept += value;
            else if (!last && field == 1)
                kept = value > kept ? value : kept;
            else if (!last && field == 2)
                kept = value < kept ? value : kept;
            else if (last || field == 3)
                kept = value;
            *a_fields[field] = kept;
        }
        return inWindow;
    }

    /// Columns in the order of the fields; returns the number of candles.
    unsigned int Aggregate(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                           const std::vector<double*>& a_columns)
    {
        std::vector<double> scratch(a_columns.size());
        std::vector<double*> fields(a_columns.size());
        for (std::size_t field = 0; field < fields.size(); ++field)
            fields[field] = &scratch[field];
        long candle = -1;
        for (unsigned int row = 0; row < a_count; ++row) {
            for (std::size_t field = 0; field < fields.size(); ++field)
                *fields[field] = a_columns[field][row];
            if (!SumWithWindow(a_times[row], fields, a_useOhl))
                ++candle;
            a_times[candle] = a_times[row];
            for (std::size_t field = 0; field < fields.size(); ++field)
                a_columns[field][candle] = scratch[field];
        }
        return static_cast<unsigned int>(candle + 1);
    }

private:
    void Stamp(const NDateTime& a_time)
    {
        const auto number = [&] { return WindowNumber(m_interval, m_multiplicity, a_time); };
        if (m_timeResult == EFirstRecordTime)
            m_windowTime = a_time;
        else if (m_timeResult == EWindowBegin)
            m_windowTime = m_window->GetBeginingOfWindowTime(a_time, number());
        else if (m_timeResult == EMetaStockWindowEnd)
            m_windowTime = m_window->GetBeginingOfNextWindowTime(a_time, number());
        else if (m_timeResult == EWindowBorder)
            m_windowTime = m_window->GetBorderOfWindowTime(a_time, number());
    }

    EInterval m_interval;
    unsigned short m_multiplicity;
    EAggrTimeResult m_timeResult;
    std::vector<EAggrType> m_types;
    std::vector<double> m_values;
    std::unique_ptr<AggrBase> m_window;
    NDateTime m_last;
    bool m_hasLast = false;
    NDateTime m_windowTime;
};

} // namespace plain
