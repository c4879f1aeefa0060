#pragma once

#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <string>
#include <vector>

/// Numbers and times as the screen shows them: with a decimal comma, and a dash for what isn't a number.
class ScreenTexts {
public:
    ScreenTexts() = delete;

    static std::wstring Price(double a_price, int a_decimals);
    /// At most seven characters up to 10^13, whatever the instrument trades in.
    static std::wstring Volume(double a_volume);
    /// A column of volumes, with the same decimals wherever that leaves the small ones readable.
    static std::vector<std::wstring> Volumes(const std::vector<double>& a_volumes);
    static std::wstring Interval(IntervalAndMultiplicity a_interval);
    /// Five or eight characters. Candles bear the time of their last row, but people know them by the start of their
    /// window.
    static std::wstring CandleTime(const NDateTime& a_time, IntervalAndMultiplicity a_interval);
    /// The same with what CandleTime leaves out: the year, or the day.
    static std::wstring LongCandleTime(const NDateTime& a_time, IntervalAndMultiplicity a_interval);
    static std::wstring Clock(const NDateTime& a_time);
    /// "04.03.2021"
    static std::wstring Day(const NDateTime& a_time);
};
