#include "console_consumer/CandleChart.h"

#include "console_consumer/CandleColumns.h"
#include "console_consumer/ScreenTexts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr int S_candleWidth = 2;
constexpr int S_labelRows = 2; // at least so many rows from one price to the next
constexpr int S_labelGap = 4;  // blanks between times

// From this height on the volume has its bars.
constexpr int S_rowsWithVolume = 12;

// What a half of a cell shows.
enum EPart : std::uint8_t { EPartNothing, EPartLine, EPartBody };

// A rising candle without colour is a thick line: it must differ from a block at a glance.
wchar_t CandleCharacter(EPart a_upper, EPart a_lower, bool a_asLine)
{
    static constexpr wchar_t S_blocks[3][3] = {{L' ', L'╷', L'▄'}, {L'╵', L'│', L'█'}, {L'▀', L'█', L'█'}};
    static constexpr wchar_t S_lines[3][3] = {{L' ', L'╷', L'╻'}, {L'╵', L'│', L'╽'}, {L'╹', L'╿', L'┃'}};
    return a_asLine ? S_lines[a_upper][a_lower] : S_blocks[a_upper][a_lower];
}

// The least of 1, 2, 5, 10, 20, ... that isn't below a_least.
double RoundStep(double a_least)
{
    const double power = std::pow(10.0, std::floor(std::log10(a_least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= a_least)
            return factor * power;
    return 10.0 * power;
}

// Whether candles' times mention what changed between them: the day, or the year.
bool BeginsDay(const NDateTime& a_before, const NDateTime& a_time, IntervalAndMultiplicity a_interval)
{
    if (a_interval.GetInterval() < EIntervalDay)
        return !a_before.SameDay(a_time);
    return a_interval.GetInterval() < EIntervalMonth && a_before.GetYear() != a_time.GetYear();
}

} // namespace

struct CandleChart::Scale {
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
    int units = 0; // half rows

    int GetRows() const { return units / 2; }
    int ToUnit(double a_price) const
    {
        if (!std::isfinite(a_price))
            return 0;
        const double share = (a_price - low) / (high - low);
        return std::clamp(static_cast<int>(std::floor(share * units)), 0, units - 1);
    }
    int ToRow(double a_price) const { return GetRows() - 1 - ToUnit(a_price) / 2; }
};

void CandleChart::Draw(ScreenArea a_area)
{
    const CandleColumns candles(m_model.data.candles);
    if (candles.GetCount() == 0) {
        m_cells.Write(a_area.left + 1, a_area.top + a_area.height / 2,
                      m_model.data.historyEnded ? L"brak świec" : L"oczekiwanie na dane…", EInkDim);
        return;
    }
    const int rows = a_area.height - 1; // times are below
    if (rows < 2)
        return;
    // The axis is as wide as its prices, which are those of the candles that it leaves room for.
    int plot = 0;
    std::size_t first = 0;
    Scale scale;
    for (int axis = 3;; ++axis) {
        plot = a_area.width - axis;
        if (plot < S_candleWidth)
            return;
        first =
            candles.GetCount() - std::min(candles.GetCount(), static_cast<std::size_t>(plot / S_candleWidth));
        scale = {};
        for (std::size_t row = first; row < candles.GetCount(); ++row) {
            scale.low = std::fmin(scale.low, candles.Get(IntervalMin, row));
            scale.high = std::fmax(scale.high, candles.Get(IntervalMax, row));
        }
        if (!std::isfinite(scale.high - scale.low))
            return;
        const auto width = [&](double a_price) {
            return Length(ScreenTexts::Price(a_price, m_model.data.decimals));
        };
        if (std::max(width(scale.low), width(scale.high)) + 2 <= axis)
            break;
    }
    if (scale.high <= scale.low) {
        const double margin = std::max(std::abs(scale.low) * 0.001, 0.01);
        scale.low -= margin;
        scale.high += margin;
    }
    const int volumeRows = rows < S_rowsWithVolume ? 0 : std::clamp(rows / 7, 2, 4);
    scale.units = (rows - volumeRows) * 2;

    const int axisColumn = a_area.left + plot;
    DrawAxis(scale, axisColumn, a_area.top);
    const ScreenArea below{a_area.left, a_area.top + scale.GetRows(), plot, volumeRows};
    for (int row = 0; row < volumeRows; ++row)
        m_cells.Put(axisColumn, below.top + row, {L'│', EInkDim, false, false});
    if (volumeRows > 0)
        DrawVolumes(first, below);
    int column = axisColumn - static_cast<int>(candles.GetCount() - first) * S_candleWidth;
    for (std::size_t row = first; row < candles.GetCount(); ++row, column += S_candleWidth)
        DrawCandle(row, scale, column, a_area.top);
    DrawTimes(first, {a_area.left, a_area.top + rows, plot, 1});
}

void CandleChart::DrawAxis(const Scale& a_scale, int a_column, int a_top)
{
    const CandleColumns candles(m_model.data.candles);
    const std::size_t last = candles.GetCount() - 1;
    const int decimals = m_model.data.decimals;
    for (int row = 0; row < a_scale.GetRows(); ++row)
        m_cells.Put(a_column, a_top + row, {L'│', EInkDim, false, false});
    const double leastStep = std::pow(10.0, -decimals);
    const double step =
        RoundStep(std::max((a_scale.high - a_scale.low) / a_scale.GetRows() * S_labelRows, leastStep));
    const double firstLabel = std::ceil(a_scale.low / step);
    const int lastRow = a_scale.ToRow(candles.Get(Price, last));
    for (int place = 0; place < a_scale.GetRows(); ++place) {
        const double price = (firstLabel + place) * step;
        if (!(price <= a_scale.high))
            break;
        const int row = a_scale.ToRow(price);
        m_cells.Put(a_column, a_top + row, {L'┤', EInkDim, false, false});
        if (row != lastRow)
            m_cells.Write(a_column + 1, a_top + row, ScreenTexts::Price(price, decimals), EInkDim);
    }
    m_cells.Put(a_column, a_top + lastRow, {L'◄', candles.GetInk(last), true, false});
    m_cells.Write(a_column + 1, a_top + lastRow, ScreenTexts::Price(candles.Get(Price, last), decimals),
                  candles.GetInk(last), true);
}

void CandleChart::DrawCandle(std::size_t a_row, const Scale& a_scale, int a_column, int a_top)
{
    const CandleColumns candles(m_model.data.candles);
    const double open = candles.Get(IntervalOpen, a_row);
    const double close = candles.Get(Price, a_row);
    const int low = a_scale.ToUnit(candles.Get(IntervalMin, a_row));
    const int high = a_scale.ToUnit(candles.Get(IntervalMax, a_row));
    const int bodyLow = a_scale.ToUnit(std::min(open, close));
    const int bodyHigh = a_scale.ToUnit(std::max(open, close));
    const auto part = [&](int a_unit) {
        if (a_unit >= bodyLow && a_unit <= bodyHigh)
            return EPartBody;
        return a_unit >= low && a_unit <= high ? EPartLine : EPartNothing;
    };
    for (int row = 0; row < a_scale.GetRows(); ++row) {
        const int lower = (a_scale.GetRows() - 1 - row) * 2;
        const wchar_t text = CandleCharacter(part(lower + 1), part(lower),
                                             !m_model.inColour && candles.GetInk(a_row) == EInkUp);
        if (text != L' ')
            m_cells.Put(a_column, a_top + row, {text, candles.GetInk(a_row), false, false});
    }
}

void CandleChart::DrawVolumes(std::size_t a_first, ScreenArea a_area)
{
    static constexpr std::array<wchar_t, 9> S_eighths = {L' ', L'▁', L'▂', L'▃', L'▄',
                                                         L'▅', L'▆', L'▇', L'█'};
    const CandleColumns candles(m_model.data.candles);
    double greatest = 0.0;
    for (std::size_t row = a_first; row < candles.GetCount(); ++row)
        greatest = std::fmax(greatest, candles.Get(Volume, row));
    if (!(greatest > 0.0) || !std::isfinite(greatest))
        return;
    int column = a_area.left + a_area.width - static_cast<int>(candles.GetCount() - a_first) * S_candleWidth;
    for (std::size_t row = a_first; row < candles.GetCount(); ++row, column += S_candleWidth) {
        const double volume = candles.Get(Volume, row);
        if (!(volume > 0.0))
            continue;
        int eighths = std::max(static_cast<int>(std::lround(volume / greatest * a_area.height * 8)), 1);
        for (int cell = a_area.top + a_area.height - 1; eighths > 0; --cell, eighths -= 8)
            m_cells.Put(column, cell,
                        {S_eighths[static_cast<std::size_t>(std::min(eighths, 8))], EInkDim, false, false});
    }
    m_cells.Put(a_area.left + a_area.width, a_area.top, {L'┤', EInkDim, false, false});
    m_cells.Write(a_area.left + a_area.width + 1, a_area.top, ScreenTexts::Volume(greatest), EInkDim);
}

// Days first, where they begin, and then times where they leave room.
void CandleChart::DrawTimes(std::size_t a_first, ScreenArea a_area)
{
    const CandleColumns candles(m_model.data.candles);
    const IntervalAndMultiplicity interval = m_model.data.interval;
    const int firstColumn =
        a_area.left + a_area.width - static_cast<int>(candles.GetCount() - a_first) * S_candleWidth;
    std::vector<bool> taken(static_cast<std::size_t>(a_area.width), false);
    const auto write = [&](std::size_t a_row, const std::wstring& a_text, int a_gap, bool a_bold) {
        const int column = firstColumn + static_cast<int>(a_row - a_first) * S_candleWidth - a_area.left;
        const int end = column + Length(a_text);
        if (end > a_area.width)
            return;
        for (int place = std::max(column - a_gap, 0); place < std::min(end + a_gap, a_area.width); ++place)
            if (taken[static_cast<std::size_t>(place)])
                return;
        std::fill(taken.begin() + column, taken.begin() + end, true);
        m_cells.Write(a_area.left + column, a_area.top, a_text, EInkDim, a_bold);
    };
    for (std::size_t row = a_first + 1; row < candles.GetCount(); ++row)
        if (BeginsDay(candles.GetTime(row - 1), candles.GetTime(row), interval))
            write(row,
                  interval.GetInterval() < EIntervalDay ? ScreenTexts::Day(candles.GetTime(row)).substr(0, 5)
                                                        : ScreenTexts::Day(candles.GetTime(row)).substr(6),
                  1, true);
    for (std::size_t row = a_first; row < candles.GetCount(); ++row)
        write(row, ScreenTexts::CandleTime(candles.GetTime(row), interval), S_labelGap, false);
}
