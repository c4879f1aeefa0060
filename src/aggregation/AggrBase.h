#pragma once

#include "aggregation/EAggrTimeResult.h"
#include "platform/Export.h"
#include "time/NDateTime.h"

/// Answers for one interval: does a time still belong to the open candle, and which time does a candle bear?
///
/// Windows are anchored to the calendar, not to the first row: they count from midnight, from 1 January or from year 0,
/// and the multiplicity divides that count. The last window of a day or a year is cut short where the anchor ends.
/// Times are read through their packed fields alone. An object holds the state of one open window and belongs to one
/// Aggregator; it is never copied. Times whose status isn't valid are not refused: they are read as they are, and a
/// place outside a table counts as its first.
class KALVENTO_API AggrBase {
public:
    /// a_multiplicity must be above 0; anything else raises KalventoException.
    AggrBase(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);
    virtual ~AggrBase() = default;
    AggrBase(const AggrBase&) = delete;
    AggrBase& operator=(const AggrBase&) = delete;

    /// Bounds of the window in which a_time lies, from a_time alone. Either pointer may be null and is then skipped.
    /// The end is the window's border, except for months: there it is the last day, and the border the first of that
    /// month.
    virtual void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const;
    /// True if a_time lies in the open window. If not, its window becomes the open one. The only operation that changes
    /// the open window. The first time after the start or a reset always opens a window.
    virtual bool IsInCurrentWindow(const NDateTime& a_time) = 0;
    /// First instant of a window: the date comes from a_time, the place in the day or year from the number a_window.
    /// Counter 0, here and below.
    virtual NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const = 0;
    /// Last instant inside a window, in the resolution of the class.
    virtual NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const = 0;
    /// First instant after a window; raises KalventoException for intervals of a day and longer, and for ticks.
    virtual NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const = 0;
    /// The number of the window in which a_time lies, from a_time alone: counted from 0 at midnight, at 1 January or at
    /// year 0. With a_time it names the window to the three operations above. Raises KalventoException for ticks.
    virtual int GetWindowNumber(const NDateTime& a_time) const = 0;

protected:
    friend class Aggregator;

    /// Closes the open window.
    void ResetOpenWindow()
    {
        m_currentWindow = -1;
        m_currentDay = -1;
        m_windowTime = NDateTime();
    }

    unsigned short m_multiplicity; // above 0
    int m_currentWindow = -1;      // number of the open window
    int m_currentDay = -1;         // day of year of the row that opened the window; -1: none is open
    int m_slotsPerDay = 0;         // size of the class's table
    EAggrTimeResult m_timeResult;
    NDateTime m_windowTime; // what the open candle bears; never set under ELastRecordTime
};
