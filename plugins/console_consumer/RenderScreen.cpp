#include "console_consumer/RenderScreen.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace {

constexpr int S_panelWidth = 33;
constexpr int S_widthWithPanel = 68; // from this width on book and trades stand beside the chart
constexpr int S_bookHeight = 7;
constexpr std::size_t S_levels = 5;

struct Area {
    int left;
    int top;
    int width;
    int height;
};

std::wstring PriceText(double a_price, int a_decimals)
{
    if (!std::isfinite(a_price))
        return L"–";
    std::wstring text = fmt::format(L"{:.{}f}", a_price, a_decimals);
    std::replace(text.begin(), text.end(), L'.', L',');
    return text;
}

// At most six characters up to 10^13, whatever the instrument trades in: four or more digits that count.
std::wstring VolumeText(double a_volume)
{
    if (!std::isfinite(a_volume))
        return L"–";
    const double size = std::abs(a_volume);
    std::wstring text;
    if (size >= 999999.5) {
        text =
            size >= 1e9 ? fmt::format(L"{:.4g}G", a_volume / 1e9) : fmt::format(L"{:.4g}M", a_volume / 1e6);
    } else {
        const int decimals = size >= 1000 || a_volume == std::floor(a_volume) ? 0
                             : size >= 100                                    ? 2
                             : size >= 10                                     ? 3
                                                                              : 4;
        text = fmt::format(L"{:.{}f}", a_volume, decimals);
        if (decimals > 0) {
            text.erase(text.find_last_not_of(L'0') + 1);
            if (text.back() == L'.')
                text.pop_back();
        }
    }
    std::replace(text.begin(), text.end(), L'.', L',');
    return text;
}

std::wstring IntervalText(IntervalAndMultiplicity a_interval)
{
    const wchar_t* unit = L"";
    switch (a_interval.GetInterval()) {
    case EIntervalTick:
        unit = L"tick";
        break;
    case EIntervalSecond:
        unit = L"s";
        break;
    case EIntervalMinute:
        unit = L"min";
        break;
    case EIntervalHour:
        unit = L"godz.";
        break;
    case EIntervalDay:
        unit = L"d";
        break;
    case EIntervalWeek:
        unit = L"tydz.";
        break;
    case EIntervalMonth:
        unit = L"mies.";
        break;
    default:
        unit = L"r.";
        break;
    }
    return fmt::format(L"{} {}", a_interval.GetMultiplicity(), unit);
}

// Candles bear the time of their last row, but people know them by the begin of their window.
std::wstring TimeText(const NDateTime& a_time, IntervalAndMultiplicity a_interval)
{
    if (a_interval.GetInterval() >= EIntervalMonth)
        return fmt::format(L"{:02}.{:02}", a_time.GetMonth(), a_time.GetYear() % 100);
    if (a_interval.GetInterval() >= EIntervalDay)
        return fmt::format(L"{:02}.{:02}", a_time.GetDay(), a_time.GetMonth());
    const unsigned int unit = a_interval.GetInterval() == EIntervalHour     ? 3600
                              : a_interval.GetInterval() == EIntervalMinute ? 60
                                                                            : 1;
    const unsigned int window = a_interval.IsTick() ? 1 : unit * std::max(a_interval.GetMultiplicity(), 1U);
    const unsigned int begin = a_time.GetAbsoluteTime() / window * window;
    if (unit > 1)
        return fmt::format(L"{:02}:{:02}", begin / 3600, begin / 60 % 60);
    return fmt::format(L"{:02}:{:02}:{:02}", begin / 3600, begin / 60 % 60, begin % 60);
}

// What a source calls an instrument could else move the terminal's cursor, or take two columns. The ranges are those of
// Unicode in which letters and signs of one column are all there is; the C library's answer depends on the locale.
bool FitsCell(wchar_t a_character)
{
    const auto code = static_cast<std::uint32_t>(a_character);
    const auto isIn = [code](std::uint32_t a_first, std::uint32_t a_last) {
        return code >= a_first && code <= a_last;
    };
    return isIn(0x20, 0x7E) || isIn(0xA1, 0xAC) || isIn(0xAE, 0x2FF) || isIn(0x370, 0x482) ||
           isIn(0x1E00, 0x1FFF) || isIn(0x2010, 0x2027) || isIn(0x2030, 0x205E) || isIn(0x20A0, 0x20C0) ||
           isIn(0x2190, 0x2319) || isIn(0x2500, 0x25FC);
}

int Length(std::wstring_view a_text)
{
    return static_cast<int>(a_text.size());
}

// Columns of the candles, each as long as the candles; a missing one reads as NaN.
class CandleColumns {
public:
    explicit CandleColumns(const History& a_candles) : m_candles(a_candles) {}

    double Get(ESeriesId a_seriesId, std::size_t a_row) const
    {
        const auto column = m_candles.find(a_seriesId);
        return column == m_candles.end() ? std::nan("") : column->second[a_row];
    }
    std::size_t GetCount() const { return m_candles.GetRecordsCount(); }
    const NDateTime& GetTime(std::size_t a_row) const { return m_candles.TimeSeries()[a_row]; }
    EScreenInk GetInk(std::size_t a_row) const
    {
        return Get(Price, a_row) >= Get(IntervalOpen, a_row) ? EInkUp : EInkDown;
    }

private:
    const History& m_candles;
};

void DrawHeader(const ScreenModel& a_model, ScreenCells& a_cells)
{
    const int width = a_cells.GetWidth();
    a_cells.Reverse(0, 0, width, EInkAccent);
    std::wstring left = L' ' + a_model.symbol;
    if (width >= 60 && a_model.name != a_model.symbol)
        left += L"  " + a_model.name;
    left += L"  " + IntervalText(a_model.data.interval);
    std::wstring right = a_model.provider;
    if (a_model.count > 1)
        right += fmt::format(L"  {}/{}", a_model.place + 1, a_model.count);
    right += L' ';
    a_cells.Write(0, 0, left, EInkAccent, true);
    if (Length(left) + Length(right) < width)
        a_cells.WriteBefore(width, 0, right, EInkAccent);
}

void DrawPrice(const ScreenModel& a_model, ScreenCells& a_cells)
{
    const Watch::Snapshot& data = a_model.data;
    int column = 1;
    if (data.lastPrice) {
        const EScreenInk ink = data.direction > 0 ? EInkUp : data.direction < 0 ? EInkDown : EInkNormal;
        std::wstring text = PriceText(*data.lastPrice, data.decimals);
        text += data.direction > 0 ? L" ▲" : data.direction < 0 ? L" ▼" : L"  ";
        a_cells.Write(column, 1, text, ink, true);
        column += Length(text) + 1;
    } else {
        a_cells.Write(column, 1, L"brak notowań", EInkDim);
        column += 13;
    }
    if (data.lastPrice && data.reference && *data.reference != 0.0) {
        const double change = *data.lastPrice - *data.reference;
        std::wstring text =
            fmt::format(L"{}{} ({}{}%)", change > 0 ? L"+" : L"", PriceText(change, data.decimals),
                        change > 0 ? L"+" : L"", PriceText(100.0 * change / *data.reference, 2));
        a_cells.Write(column, 1, text, change > 0 ? EInkUp : change < 0 ? EInkDown : EInkNormal);
        column += Length(text) + 2;
    }
    std::wstring status = L"● rozłączony";
    EScreenInk ink = EInkDown;
    if (a_model.status == EConnectionStatusConnected) {
        status = L"● połączony";
        ink = EInkUp;
    } else if (a_model.status == EConnectionStatusConnecting) {
        status = L"◌ łączenie";
        ink = EInkAccent;
    }
    const int end = a_cells.GetWidth() - 1;
    if (end - Length(status) >= column)
        a_cells.WriteBefore(end, 1, status, ink);
    else
        a_cells.Write(end - 1, 1, status.substr(0, 1), ink);
}

void DrawFooter(const ScreenModel& a_model, ScreenCells& a_cells)
{
    const int row = a_cells.GetHeight() - 1;
    a_cells.Reverse(0, row, a_cells.GetWidth(), EInkDim);
    std::wstring text = L" n/p instrument  +/- interwał  spacja stop  c/t wykres/tabela  q koniec";
    if (Length(text) > a_cells.GetWidth())
        text = L" n/p  +/-  spacja  c/t  q koniec";
    EScreenInk ink = EInkDim;
    if (!a_model.data.ended.empty())
        text = L' ' + a_model.data.ended;
    if (!a_model.message.empty())
        text = L' ' + a_model.message;
    if (a_model.frozen) {
        text = L" ZATRZYMANO – spacja wznawia";
        ink = EInkAccent;
    }
    a_cells.Write(0, row, text, ink);
    a_cells.Reverse(0, row, a_cells.GetWidth(), ink);
}

struct Scale {
    double low;
    double high;
    int units; // half rows

    int ToUnit(double a_price) const
    {
        if (!std::isfinite(a_price))
            return 0;
        const double share = (a_price - low) / (high - low);
        return std::clamp(static_cast<int>(std::floor(share * units)), 0, units - 1);
    }
    double ToPrice(int a_unit) const { return low + (high - low) * (a_unit + 0.5) / units; }
};

// What a half of a cell shows: 0 nothing, 1 the line from low to high, 2 the body.
wchar_t CandleCharacter(int a_upper, int a_lower)
{
    static constexpr wchar_t S_characters[3][3] = {
        {L' ', L'╷', L'▄'}, {L'╵', L'│', L'█'}, {L'▀', L'█', L'█'}};
    return S_characters[a_upper][a_lower];
}

void DrawCandle(ScreenCells& a_cells, const CandleColumns& a_candles, std::size_t a_row, const Scale& a_scale,
                int a_column, int a_top)
{
    const double open = a_candles.Get(IntervalOpen, a_row);
    const double close = a_candles.Get(Price, a_row);
    const int low = a_scale.ToUnit(a_candles.Get(IntervalMin, a_row));
    const int high = a_scale.ToUnit(a_candles.Get(IntervalMax, a_row));
    const int bodyLow = a_scale.ToUnit(std::min(open, close));
    const int bodyHigh = a_scale.ToUnit(std::max(open, close));
    const auto part = [&](int a_unit) {
        if (a_unit >= bodyLow && a_unit <= bodyHigh)
            return 2;
        return a_unit >= low && a_unit <= high ? 1 : 0;
    };
    const int rows = a_scale.units / 2;
    for (int row = 0; row < rows; ++row) {
        const int lower = (rows - 1 - row) * 2;
        const wchar_t text = CandleCharacter(part(lower + 1), part(lower));
        if (text != L' ')
            a_cells.Put(a_column, a_top + row, {text, a_candles.GetInk(a_row), false, false});
    }
}

void DrawChart(const ScreenModel& a_model, ScreenCells& a_cells, Area a_area)
{
    const CandleColumns candles(a_model.data.candles);
    if (candles.GetCount() == 0) {
        a_cells.Write(a_area.left + 1, a_area.top + a_area.height / 2,
                      a_model.data.historyEnded ? L"brak świec" : L"oczekiwanie na dane…", EInkDim);
        return;
    }
    const int rows = a_area.height - 1; // times stand below
    if (rows < 2)
        return;
    int decimals = a_model.data.decimals;
    const int axis = Length(PriceText(candles.Get(IntervalMax, candles.GetCount() - 1), decimals)) + 2;
    const int plot = a_area.width - axis;
    if (plot < 2)
        return;
    const std::size_t shown = std::min(candles.GetCount(), static_cast<std::size_t>(plot / 2));
    const std::size_t first = candles.GetCount() - shown;
    Scale scale{HUGE_VAL, -HUGE_VAL, rows * 2};
    for (std::size_t row = first; row < candles.GetCount(); ++row) {
        scale.low = std::fmin(scale.low, candles.Get(IntervalMin, row));
        scale.high = std::fmax(scale.high, candles.Get(IntervalMax, row));
    }
    if (!std::isfinite(scale.low) || !std::isfinite(scale.high))
        return;
    if (scale.high <= scale.low) {
        const double margin = std::max(std::abs(scale.low) * 0.001, 0.01);
        scale.low -= margin;
        scale.high += margin;
    }

    const int axisColumn = a_area.left + plot;
    const int lastRow = rows - 1 - scale.ToUnit(candles.Get(Price, candles.GetCount() - 1)) / 2;
    for (int row = 0; row < rows; ++row) {
        const bool isLast = row == lastRow;
        a_cells.Put(axisColumn, a_area.top + row, {isLast ? L'◄' : L'│', EInkDim, false, false});
        if (isLast)
            a_cells.Write(axisColumn + 1, a_area.top + row,
                          PriceText(candles.Get(Price, candles.GetCount() - 1), decimals),
                          candles.GetInk(candles.GetCount() - 1), true);
        else if (row % 3 == 0 && std::abs(row - lastRow) > 1)
            a_cells.Write(axisColumn + 1, a_area.top + row,
                          PriceText(scale.ToPrice((rows - 1 - row) * 2 + 1), decimals), EInkDim);
    }
    const int firstColumn = a_area.left + plot - static_cast<int>(shown) * 2;
    int freeFrom = a_area.left;
    for (std::size_t row = first; row < candles.GetCount(); ++row) {
        const int column = firstColumn + static_cast<int>(row - first) * 2;
        DrawCandle(a_cells, candles, row, scale, column, a_area.top);
        const std::wstring time = TimeText(candles.GetTime(row), a_model.data.interval);
        if (column >= freeFrom && column + Length(time) <= axisColumn) {
            a_cells.Write(column, a_area.top + rows, time, EInkDim);
            freeFrom = column + Length(time) + 5;
        }
    }
}

void DrawTable(const ScreenModel& a_model, ScreenCells& a_cells, Area a_area)
{
    const CandleColumns candles(a_model.data.candles);
    struct Column {
        const wchar_t* title;
        ESeriesId seriesId;
    };
    static constexpr std::array<Column, 5> S_columns = {{{L"otwarcie", IntervalOpen},
                                                         {L"maks.", IntervalMax},
                                                         {L"min.", IntervalMin},
                                                         {L"zamkn.", Price},
                                                         {L"wolumen", Volume}}};
    const bool hasSeconds = a_model.data.interval.GetInterval() < EIntervalMinute;
    int left = a_area.left + (hasSeconds ? 9 : 6);
    const int end = a_area.left + a_area.width;
    const std::size_t rows =
        std::min(candles.GetCount(), static_cast<std::size_t>(std::max(a_area.height - 1, 0)));
    a_cells.Write(a_area.left + 1, a_area.top, L"czas", EInkDim);
    for (std::size_t row = 0; row < rows; ++row)
        a_cells.Write(a_area.left + 1, a_area.top + 1 + static_cast<int>(row),
                      TimeText(candles.GetTime(candles.GetCount() - 1 - row), a_model.data.interval),
                      EInkDim);
    for (const Column& column : S_columns) {
        int width = Length(column.title);
        std::vector<std::wstring> texts;
        for (std::size_t row = 0; row < rows; ++row) {
            const double value = candles.Get(column.seriesId, candles.GetCount() - 1 - row);
            texts.push_back(column.seriesId == Volume ? VolumeText(value)
                                                      : PriceText(value, a_model.data.decimals));
            width = std::max(width, Length(texts.back()));
        }
        left += width + 1;
        if (left > end)
            return;
        a_cells.WriteBefore(left, a_area.top, column.title, EInkDim);
        for (std::size_t row = 0; row < rows; ++row)
            a_cells.WriteBefore(left, a_area.top + 1 + static_cast<int>(row), texts[row],
                                column.seriesId == Price ? candles.GetInk(candles.GetCount() - 1 - row)
                                                         : EInkNormal);
    }
}

struct Level {
    std::optional<double> price;
    std::optional<double> volume;
};

Level GetLevel(const ScreenModel& a_model, ESeriesId a_price, ESeriesId a_volume, std::size_t a_level)
{
    const auto read = [&](ESeriesId a_first) -> std::optional<double> {
        if (!a_model.data.offers)
            return {};
        const auto found = a_model.data.offers->find(static_cast<ESeriesId>(a_first + a_level));
        if (found == a_model.data.offers->end() || !found->second.IsSet())
            return {};
        return found->second.value;
    };
    return {read(a_price), read(a_volume)};
}

// Volumes outside, prices inside; a bar behind each side grows from the middle with the share of the largest volume.
void DrawBook(const ScreenModel& a_model, ScreenCells& a_cells, Area a_area)
{
    const int half = a_area.width / 2;
    const int middle = a_area.left + half;
    a_cells.Write(a_area.left, a_area.top, L"wolumen", EInkDim);
    a_cells.WriteBefore(middle - 1, a_area.top, L"kupno", EInkUp, true);
    a_cells.Write(middle + 1, a_area.top, L"sprzedaż", EInkDown, true);
    a_cells.WriteBefore(a_area.left + a_area.width, a_area.top, L"wolumen", EInkDim);
    double largest = 0.0;
    for (std::size_t level = 0; level < S_levels; ++level) {
        largest = std::fmax(largest, GetLevel(a_model, Bid1, BidVolume1, level).volume.value_or(0.0));
        largest = std::fmax(largest, GetLevel(a_model, Ask1, AskVolume1, level).volume.value_or(0.0));
    }
    const auto barLength = [&](const Level& a_level) {
        if (!a_level.volume || !(largest > 0.0) || !(*a_level.volume > 0.0))
            return 0;
        return std::clamp(static_cast<int>(std::lround(*a_level.volume / largest * (half - 1))), 1, half - 1);
    };
    for (std::size_t level = 0; level < S_levels; ++level) {
        const int row = a_area.top + 1 + static_cast<int>(level);
        if (row >= a_area.top + a_area.height)
            return;
        a_cells.Put(middle, row, {L'│', EInkDim, false, false});
        if (const Level bid = GetLevel(a_model, Bid1, BidVolume1, level); bid.price) {
            a_cells.WriteBefore(middle - 1, row, PriceText(*bid.price, a_model.data.decimals), EInkUp);
            a_cells.Write(a_area.left, row, VolumeText(bid.volume.value_or(std::nan(""))), EInkUp);
            const int length = barLength(bid);
            a_cells.Reverse(middle - length, row, length, EInkUp);
        }
        if (const Level ask = GetLevel(a_model, Ask1, AskVolume1, level); ask.price) {
            a_cells.Write(middle + 1, row, PriceText(*ask.price, a_model.data.decimals), EInkDown);
            a_cells.WriteBefore(a_area.left + a_area.width, row,
                                VolumeText(ask.volume.value_or(std::nan(""))), EInkDown);
            a_cells.Reverse(middle + 1, row, barLength(ask), EInkDown);
        }
    }
}

// The best offers in one line, where there is no room for the book.
void DrawBestOffers(const ScreenModel& a_model, ScreenCells& a_cells, Area a_area)
{
    const auto text = [&](const wchar_t* a_title, const Level& a_level) {
        return a_level.price
                   ? fmt::format(L"{} {} × {}", a_title, PriceText(*a_level.price, a_model.data.decimals),
                                 VolumeText(a_level.volume.value_or(std::nan(""))))
                   : fmt::format(L"{} –", a_title);
    };
    a_cells.Write(a_area.left, a_area.top, text(L"K", GetLevel(a_model, Bid1, BidVolume1, 0)), EInkUp);
    a_cells.WriteBefore(a_area.left + a_area.width, a_area.top,
                        text(L"S", GetLevel(a_model, Ask1, AskVolume1, 0)), EInkDown);
}

void DrawTrades(const ScreenModel& a_model, ScreenCells& a_cells, Area a_area)
{
    a_cells.Write(a_area.left, a_area.top, L"transakcje", EInkDim);
    const auto& trades = a_model.data.trades;
    for (std::size_t place = 0; place < trades.size() && static_cast<int>(place) + 1 < a_area.height;
         ++place) {
        const int row = a_area.top + 1 + static_cast<int>(place);
        const double older = place + 1 < trades.size() ? trades[place + 1].price : trades[place].price;
        const EScreenInk ink = trades[place].price > older   ? EInkUp
                               : trades[place].price < older ? EInkDown
                                                             : EInkNormal;
        const NDateTime& time = trades[place].time;
        a_cells.Write(a_area.left, row,
                      fmt::format(L"{:02}:{:02}:{:02}", time.GetHour(), time.GetMinute(), time.GetSecond()),
                      EInkDim);
        a_cells.WriteBefore(a_area.left + 21, row, PriceText(trades[place].price, a_model.data.decimals),
                            ink);
        a_cells.WriteBefore(a_area.left + a_area.width, row, VolumeText(trades[place].volume));
    }
}

void DrawCandles(const ScreenModel& a_model, ScreenCells& a_cells, Area a_area)
{
    if (a_model.asTable)
        return DrawTable(a_model, a_cells, a_area);
    const int tableHeight = a_area.height >= 18 ? std::min(6 + (a_area.height - 18) / 3, 12) : 0;
    Area chart = a_area;
    chart.height -= tableHeight;
    DrawChart(a_model, a_cells, chart);
    if (tableHeight > 0)
        DrawTable(a_model, a_cells,
                  {a_area.left, a_area.top + chart.height + 1, a_area.width, tableHeight - 1});
}

} // namespace

ScreenCells::ScreenCells(int a_width, int a_height)
    : m_width(std::max(a_width, 1)),
      m_height(std::max(a_height, 1)),
      m_cells(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height))
{}

ScreenCell ScreenCells::At(int a_column, int a_row) const
{
    if (a_column < 0 || a_column >= m_width || a_row < 0 || a_row >= m_height)
        return {};
    return m_cells[static_cast<std::size_t>(a_row) * static_cast<std::size_t>(m_width) +
                   static_cast<std::size_t>(a_column)];
}

std::wstring ScreenCells::GetLine(int a_row) const
{
    std::wstring line;
    for (int column = 0; column < m_width; ++column)
        line += At(column, a_row).text;
    return line;
}

void ScreenCells::Put(int a_column, int a_row, const ScreenCell& a_cell)
{
    if (a_column < 0 || a_column >= m_width || a_row < 0 || a_row >= m_height)
        return;
    m_cells[static_cast<std::size_t>(a_row) * static_cast<std::size_t>(m_width) +
            static_cast<std::size_t>(a_column)] = a_cell;
}

void ScreenCells::Write(int a_column, int a_row, std::wstring_view a_text, EScreenInk a_ink, bool a_bold)
{
    for (const wchar_t character : a_text) {
        Put(a_column, a_row,
            {FitsCell(character) ? character : L'?', a_ink, a_bold, At(a_column, a_row).reversed});
        ++a_column;
    }
}

void ScreenCells::WriteBefore(int a_end, int a_row, std::wstring_view a_text, EScreenInk a_ink, bool a_bold)
{
    Write(a_end - Length(a_text), a_row, a_text, a_ink, a_bold);
}

void ScreenCells::Reverse(int a_column, int a_row, int a_count, EScreenInk a_ink)
{
    for (int column = a_column; column < a_column + a_count; ++column) {
        ScreenCell cell = At(column, a_row);
        cell.reversed = true;
        cell.ink = a_ink;
        Put(column, a_row, cell);
    }
}

ScreenCells RenderScreen(const ScreenModel& a_model, int a_width, int a_height)
{
    ScreenCells cells(a_width, a_height);
    DrawHeader(a_model, cells);
    if (cells.GetHeight() >= 3)
        DrawPrice(a_model, cells);
    const Area body{0, 2, cells.GetWidth(), cells.GetHeight() - 3};
    if (body.height > 0 && body.width >= S_widthWithPanel) {
        const int left = body.width - S_panelWidth - 2;
        for (int row = body.top; row < body.top + body.height; ++row)
            cells.Put(left, row, {L'│', EInkDim, false, false});
        DrawCandles(a_model, cells, {body.left, body.top, left, body.height});
        const Area panel{left + 1, body.top, S_panelWidth, body.height};
        DrawBook(a_model, cells, panel);
        if (body.height > S_bookHeight + 1)
            DrawTrades(a_model, cells,
                       {panel.left, body.top + S_bookHeight, panel.width, body.height - S_bookHeight});
    } else if (body.height >= 18) {
        DrawCandles(a_model, cells, {body.left, body.top, body.width, body.height - S_bookHeight});
        DrawBook(
            a_model, cells,
            {body.left + 1, body.top + body.height - S_bookHeight + 1, body.width - 2, S_bookHeight - 1});
    } else if (body.height > 1) {
        DrawCandles(a_model, cells, {body.left, body.top, body.width, body.height - 1});
        DrawBestOffers(a_model, cells, {body.left + 1, body.top + body.height - 1, body.width - 2, 1});
    }
    DrawFooter(a_model, cells);
    return cells;
}
