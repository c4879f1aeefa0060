#include "kalvento/MarketCheck.h"

#include "kalvento/TextForms.h"
#include "series/Series.h"
#include "text_rows/SeriesNames.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <utility>

namespace kalvento::tool {

using namespace kalvento::rows;

namespace {

// Weekdays without rows are holidays as long as they are few and far between.
constexpr std::int64_t S_weekdaysForAHoliday = 15;
constexpr std::int64_t S_longestHoliday = 5;
// Trades of one second may be alike by chance.
constexpr std::uint64_t S_ticksForADouble = 4;

/// Weekdays from one day to before another.
std::int64_t WeekdaysBetween(std::int64_t a_first, std::int64_t a_end)
{
    std::int64_t count = 0;
    const std::int64_t weeks = (a_end - a_first) / 7;
    for (std::int64_t day = a_first + weeks * 7; day < a_end; ++day)
        count +=
            std::chrono::weekday(std::chrono::sys_days(std::chrono::days(day))).iso_encoding() < 6 ? 1 : 0;
    return weeks * 5 + count;
}

bool IsSane(double a_value)
{
    return std::isfinite(a_value) && a_value >= 0.0;
}

} // namespace

MarketCheck::MarketCheck(RowLayout a_layout, std::function<std::string(std::uint64_t)> a_place)
    : m_layout(std::move(a_layout)),
      m_place(std::move(a_place)),
      m_isCandle(m_layout.Has(IntervalOpen) && m_layout.Has(IntervalMax) && m_layout.Has(IntervalMin)),
      m_isDaily(m_layout.interval.GetInterval() == EIntervalDay),
      m_knowsDays(!m_layout.interval.IsEod() || m_isDaily)
{}

void MarketCheck::Add(const RowBlock& a_rows, const std::vector<Origin>& a_origins)
{
    m_rows += a_rows.rows;
    for (std::size_t row = 0; row < a_rows.rows; ++row) {
        const Origin& origin = a_origins[row];
        JudgeValues(a_rows, row, origin.place);
        const std::uint32_t symbol = m_layout.hasSymbols ? a_rows.symbols[row] : 0;
        const std::int32_t nanoseconds = row < a_rows.fractions.size() ? a_rows.fractions[row] : 0;
        if (m_repeats.IsRepeat(symbol, TimeParts::SecondOf(origin.time), nanoseconds, a_rows, row,
                               m_layout.series.size()))
            m_doubled.Add(origin.place);
        if (symbol >= m_lastDays.size())
            m_lastDays.resize(symbol + 1);
        if (m_knowsDays)
            JudgeDay(m_lastDays[symbol], origin);
    }
}

std::optional<double> MarketCheck::ValueOf(const RowBlock& a_rows, std::size_t a_row,
                                           ESeriesId a_series) const
{
    const auto found = std::ranges::find(m_layout.series, a_series);
    if (found == m_layout.series.end())
        return std::nullopt;
    return a_rows.columns[static_cast<std::size_t>(found - m_layout.series.begin())][a_row];
}

void MarketCheck::JudgeValues(const RowBlock& a_rows, std::size_t a_row, std::uint64_t a_place)
{
    bool pricesAreSane = true;
    bool volumesAreSane = true;
    for (std::size_t column = 0; column < m_layout.series.size(); ++column) {
        const ESeriesId series = m_layout.series[column];
        const bool isSane = IsSane(a_rows.columns[column][a_row]);
        if (VeloTools::Series::IsVolumeSeries(series))
            volumesAreSane = volumesAreSane && isSane;
        else if (VeloTools::Series::IsValueSeries(series) || VeloTools::Series::IsAggregationSeries(series))
            pricesAreSane = pricesAreSane && isSane;
    }
    if (!pricesAreSane)
        m_badPrices.Add(a_place);
    if (!volumesAreSane)
        m_badVolumes.Add(a_place);
    if (!m_isCandle)
        return;
    const double high = *ValueOf(a_rows, a_row, IntervalMax);
    const double low = *ValueOf(a_rows, a_row, IntervalMin);
    if (high < low) {
        m_highBelowLow.Add(a_place);
        return; // nothing lies between them
    }
    const auto isOutside = [&](ESeriesId a_series) {
        const double value = *ValueOf(a_rows, a_row, a_series);
        return value < low || value > high;
    };
    if (isOutside(IntervalOpen))
        m_openOutside.Add(a_place);
    if (isOutside(Price))
        m_closeOutside.Add(a_place);
}

void MarketCheck::JudgeDay(LastDay& a_last, const Origin& a_origin)
{
    const std::int64_t day = TimeParts::DayOf(a_origin.time);
    const std::int64_t before = std::exchange(a_last.day, day);
    if (!std::exchange(a_last.isKnown, true) || day < before)
        return;
    if (day == before) {
        if (m_isDaily)
            m_repeatedDays.Add(a_origin.place);
        return;
    }
    m_weekdays += WeekdaysBetween(before, day);
    const std::int64_t missing = WeekdaysBetween(before + 1, day);
    if (missing == 0)
        return;
    if (m_missing.count == 0) {
        m_firstMissing = before + 1;
        while (WeekdaysBetween(m_firstMissing, m_firstMissing + 1) == 0)
            ++m_firstMissing;
        m_missing.place = a_origin.place;
    }
    m_missing.count += static_cast<std::uint64_t>(missing);
    m_longestGap = std::max(m_longestGap, missing);
}

std::string MarketCheck::FaultOf(const Finding& a_finding, const char* a_what) const
{
    if (a_finding.count == 0)
        return {};
    return ShownCount(a_finding.count) + (a_finding.count == 1 ? " row " : " rows ") + a_what +
           "; the first is " + m_place(a_finding.place);
}

MarketCheck::Answer MarketCheck::DaysAnswer() const
{
    Answer answer{"days", FaultOf(m_repeatedDays, "of a day that is there already")};
    if (m_missing.count == 0)
        return answer;
    const std::string text = ShownCount(m_missing.count) +
                             (m_missing.count == 1 ? " weekday has" : " weekdays have") +
                             " no rows; the first is " +
                             FormatTime(TimeParts::TimeOf(m_firstMissing * TimeParts::S_secondsOfDay), true) +
                             ", before " + m_place(m_missing.place);
    const bool areHolidays =
        static_cast<std::int64_t>(m_missing.count) * S_weekdaysForAHoliday <= m_weekdays &&
        m_longestGap <= S_longestHoliday;
    if (areHolidays)
        answer.remark = text;
    else
        answer.fault += (answer.fault.empty() ? "" : "; ") + text;
    return answer;
}

MarketCheck::Answer MarketCheck::DoubledAnswer() const
{
    std::string text = FaultOf(m_doubled, "repeating another one exactly");
    const bool isChance = !m_isCandle && m_doubled.count * S_ticksForADouble <= m_rows;
    if (isChance)
        return {"doubled rows", {}, std::move(text)};
    return {"doubled rows", std::move(text)};
}

std::vector<MarketCheck::Answer> MarketCheck::GetAnswers() const
{
    if (m_rows == 0)
        return {{"rows", "there are none"}};
    std::vector<Answer> answers = {{"prices", FaultOf(m_badPrices, "with a price below 0 or no number")}};
    if (std::ranges::any_of(m_layout.series, VeloTools::Series::IsVolumeSeries))
        answers.push_back({"volumes", FaultOf(m_badVolumes, "with a volume below 0 or no number")});
    if (m_isCandle) {
        std::string fault;
        for (const std::string& each : {FaultOf(m_highBelowLow, "with the high below the low"),
                                        FaultOf(m_openOutside, "with the open outside of high and low"),
                                        FaultOf(m_closeOutside, "with the close outside of high and low")})
            fault += (fault.empty() || each.empty() ? "" : "; ") + each;
        answers.push_back({"high and low", std::move(fault)});
    }
    if (m_knowsDays)
        answers.push_back(DaysAnswer());
    answers.push_back(DoubledAnswer());
    return answers;
}

} // namespace kalvento::tool
