#include "console_consumer/ScreenTexts.h"

#include "time/TimeParts.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

constexpr std::size_t S_volumeWidth = 7;
constexpr int S_volumeDecimals = 4;
constexpr double S_greatestPrice = 1e12; // written with a power of ten from here on
constexpr double S_large = 999999.5;     // written in millions from here on

std::wstring WithComma(std::wstring a_text)
{
    std::replace(a_text.begin(), a_text.end(), L'.', L',');
    return a_text;
}

// How many decimals the value needs.
int DecimalsOf(double a_value)
{
    int decimals = 0;
    double scale = 1.0;
    while (decimals < S_volumeDecimals &&
           std::abs(a_value * scale - std::round(a_value * scale)) > 1e-6 * scale) {
        ++decimals;
        scale *= 10.0;
    }
    return decimals;
}

bool IsLarge(double a_value)
{
    return !std::isfinite(a_value) || std::abs(a_value) >= S_large;
}

} // namespace

std::wstring ScreenTexts::Price(double a_price, int a_decimals)
{
    if (!std::isfinite(a_price))
        return L"–";
    return WithComma(std::abs(a_price) < S_greatestPrice ? fmt::format(L"{:.{}f}", a_price, a_decimals)
                                                         : fmt::format(L"{:.6g}", a_price));
}

std::wstring ScreenTexts::Volume(double a_volume)
{
    if (!std::isfinite(a_volume))
        return L"–";
    const double size = std::abs(a_volume);
    if (size >= 1e9)
        return WithComma(fmt::format(L"{:.4g}G", a_volume / 1e9));
    if (size >= S_large)
        return WithComma(fmt::format(L"{:.4g}M", a_volume / 1e6));
    int decimals = S_volumeDecimals;
    if (size >= 1000)
        decimals = 0;
    else if (size >= 100)
        decimals = 2;
    else if (size >= 10)
        decimals = 3;
    return WithComma(fmt::format(L"{:.{}f}", a_volume, std::min(decimals, DecimalsOf(a_volume))));
}

std::vector<std::wstring> ScreenTexts::Volumes(const std::vector<double>& a_volumes)
{
    int decimals = 0;
    double least = HUGE_VAL;
    double greatest = 0.0;
    for (const double volume : a_volumes) {
        if (IsLarge(volume) || volume == 0.0)
            continue;
        decimals = std::max(decimals, DecimalsOf(volume));
        least = std::min(least, std::abs(volume));
        greatest = std::max(greatest, std::abs(volume));
    }
    while (decimals > 0 && fmt::format(L"{:.{}f}", greatest, decimals).size() > S_volumeWidth)
        --decimals;
    // The smallest one must keep two digits.
    const bool inCommon = least * std::pow(10.0, decimals) >= (decimals > 0 ? 9.5 : 0.5);
    std::vector<std::wstring> texts;
    texts.reserve(a_volumes.size());
    for (const double volume : a_volumes)
        texts.push_back(inCommon && !IsLarge(volume) ? WithComma(fmt::format(L"{:.{}f}", volume, decimals))
                                                     : Volume(volume));
    return texts;
}

std::wstring ScreenTexts::Interval(IntervalAndMultiplicity a_interval)
{
    static constexpr std::array<const wchar_t*, EIntervalYear> S_units = {
        L"tick", L"s", L"min", L"godz.", L"d", L"tydz.", L"mies.", L"r."};
    const std::size_t place = a_interval.GetInterval() - EIntervalTick;
    const wchar_t* const unit = S_units[std::min(place, S_units.size() - 1)];
    return fmt::format(L"{} {}", a_interval.GetMultiplicity(), unit);
}

std::wstring ScreenTexts::CandleTime(const NDateTime& a_time, IntervalAndMultiplicity a_interval)
{
    if (a_interval.GetInterval() >= EIntervalMonth)
        return fmt::format(L"{:02}.{:02}", a_time.GetMonth(), a_time.GetYear() % 100);
    if (a_interval.GetInterval() >= EIntervalDay)
        return fmt::format(L"{:02}.{:02}", a_time.GetDay(), a_time.GetMonth());
    const std::int64_t unit = std::max<std::int64_t>(TimeParts::SecondsOfUnit(a_interval.GetInterval()), 1);
    const std::int64_t window = a_interval.IsTick() ? 1 : unit * std::max(a_interval.GetMultiplicity(), 1U);
    const auto begin =
        TimeParts::ClockOf(static_cast<std::uint32_t>(a_time.GetAbsoluteTime() / window * window));
    if (unit > 1)
        return fmt::format(L"{:02}:{:02}", begin.hour, begin.minute);
    return fmt::format(L"{:02}:{:02}:{:02}", begin.hour, begin.minute, begin.second);
}

std::wstring ScreenTexts::LongCandleTime(const NDateTime& a_time, IntervalAndMultiplicity a_interval)
{
    if (a_interval.GetInterval() >= EIntervalMonth)
        return fmt::format(L"{:02}.{}", a_time.GetMonth(), a_time.GetYear());
    if (a_interval.GetInterval() >= EIntervalDay)
        return Day(a_time);
    return fmt::format(L"{:02}.{:02} {}", a_time.GetDay(), a_time.GetMonth(), CandleTime(a_time, a_interval));
}

std::wstring ScreenTexts::Clock(const NDateTime& a_time)
{
    return fmt::format(L"{:02}:{:02}:{:02}", a_time.GetHour(), a_time.GetMinute(), a_time.GetSecond());
}

std::wstring ScreenTexts::Day(const NDateTime& a_time)
{
    return fmt::format(L"{:02}.{:02}.{}", a_time.GetDay(), a_time.GetMonth(), a_time.GetYear());
}
