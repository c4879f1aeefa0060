#include "console_consumer/RenderScreen.h"

#include "console_consumer/CandleChart.h"
#include "console_consumer/CandleColumns.h"
#include "console_consumer/ScreenTexts.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr int S_panelWidth = 33;
constexpr int S_widthWithPanel = 68; // from this width on book and trades are beside the chart
constexpr int S_bookHeight = 7;
constexpr std::size_t S_levels = 5;

const wchar_t* ArrowOf(double a_change)
{
    if (a_change > 0)
        return L" ▲";
    return a_change < 0 ? L" ▼" : L"  ";
}

void DrawHeader(const ScreenModel& a_model, ScreenCells& a_cells)
{
    const int width = a_cells.GetWidth();
    a_cells.Reverse(0, 0, width, EInkAccent);
    std::wstring left = L' ' + a_model.symbol;
    if (width >= 60 && a_model.name != a_model.symbol)
        left += L"  " + a_model.name;
    left += L"  " + ScreenTexts::Interval(a_model.data.interval);
    std::wstring right = a_model.provider;
    if (a_model.count > 1)
        right += fmt::format(L"  {}/{}", a_model.place + 1, a_model.count);
    right += L' ';
    a_cells.Write(0, 0, left, EInkAccent, true);
    if (Length(left) + Length(right) < width)
        a_cells.WriteBefore(width, 0, right, EInkAccent);
}

std::wstring StatusText(const ScreenModel& a_model)
{
    if (!a_model.data.ended.empty())
        return L"■ " + a_model.data.ended;
    switch (a_model.status) {
    case EConnectionStatusConnected:
        return L"● połączony";
    case EConnectionStatusConnecting:
        return L"◌ łączenie";
    case EConnectionStatusDisconnected:
        break;
    }
    return L"○ rozłączony";
}

EScreenInk StatusInk(const ScreenModel& a_model)
{
    if (!a_model.data.ended.empty() || a_model.status == EConnectionStatusConnecting)
        return EInkAccent;
    return a_model.status == EConnectionStatusConnected ? EInkUp : EInkDown;
}

// The longest text that fits; nothing where none does.
std::wstring FirstFitting(const std::vector<std::wstring>& a_texts, int a_width)
{
    const auto found = std::find_if(a_texts.begin(), a_texts.end(), [a_width](const std::wstring& a_text) {
        return Length(a_text) <= a_width;
    });
    return found == a_texts.end() ? std::wstring() : *found;
}

// On the left the price and its change, on the right the status and the time of what came last, and between them, where
// there is room, the figures of the day.
void DrawPrice(const ScreenModel& a_model, ScreenCells& a_cells)
{
    const Watch::Snapshot& data = a_model.data;
    const std::wstring status = StatusText(a_model);
    int end = a_cells.GetWidth() - 1;
    int column = 1;
    if (data.lastPrice) {
        std::wstring text = ScreenTexts::Price(*data.lastPrice, data.decimals);
        text += ArrowOf(data.direction);
        a_cells.Write(column, 1, text, InkOf(data.direction), true);
        column += Length(text) + 1;
    } else {
        a_cells.Write(column, 1, L"brak notowań", EInkDim);
        column += 13;
    }
    if (data.lastPrice && data.reference && *data.reference != 0.0) {
        const double change = *data.lastPrice - *data.reference;
        const wchar_t* const sign = change > 0 ? L"+" : L"";
        const std::wstring share =
            fmt::format(L"{}{}%", sign, ScreenTexts::Price(100.0 * change / *data.reference, 2));
        const std::wstring text = FirstFitting(
            {fmt::format(L"{}{} ({})", sign, ScreenTexts::Price(change, data.decimals), share), share},
            end - 2 - column);
        a_cells.Write(column, 1, text, InkOf(change));
        column += Length(text);
    }

    const std::wstring statusShown = FirstFitting({status, status.substr(0, 1)}, end - column - 11);
    const std::wstring shown = statusShown.empty() ? status.substr(0, 1) : statusShown;
    a_cells.WriteBefore(end, 1, shown, StatusInk(a_model));
    end -= Length(shown) + 2;
    if (data.time) {
        const std::wstring clock =
            FirstFitting({ScreenTexts::Day(*data.time) + L' ' + ScreenTexts::Clock(*data.time),
                          ScreenTexts::Clock(*data.time)},
                         end - column - 1);
        a_cells.WriteBefore(end, 1, clock, EInkNormal, true);
        end -= Length(clock) + 2;
    }
    const auto figure = [&](const wchar_t* a_title, const std::optional<double>& a_price) {
        return a_price ? fmt::format(L"  {} {}", a_title, ScreenTexts::Price(*a_price, data.decimals))
                       : std::wstring();
    };
    const std::wstring volume = data.volume ? L"  wol. " + ScreenTexts::Volume(*data.volume) : std::wstring();
    a_cells.Write(column, 1,
                  FirstFitting({figure(L"otw.", data.open) + figure(L"maks.", data.high) +
                                    figure(L"min.", data.low) + volume,
                                volume},
                               end - column));
}

void DrawFooter(const ScreenModel& a_model, ScreenCells& a_cells)
{
    struct Key {
        const wchar_t* key;
        const wchar_t* meaning;
        bool isShown;
    };
    const std::array<Key, 6> keys = {{{L"n/p", L"instrument", a_model.count > 1},
                                      {L"+/-", L"interwał", true},
                                      {L"r", L"od nowa", !a_model.data.ended.empty()},
                                      {L"spacja", L"zatrzymaj", true},
                                      {L"c/t", L"wykres/tabela", true},
                                      {L"q", L"koniec", true}}};
    const int row = a_cells.GetHeight() - 1;
    const int width = a_cells.GetWidth();
    if (a_model.frozen || !a_model.message.empty()) {
        const EScreenInk ink = a_model.frozen ? EInkAccent : EInkNormal;
        a_cells.Write(0, row, a_model.frozen ? L" ZATRZYMANO – spacja wznawia" : L' ' + a_model.message, ink,
                      a_model.frozen);
        a_cells.Reverse(0, row, width, ink);
        return;
    }
    // With all meanings, with that of the last key alone, or nothing but the last key.
    const auto lay = [&](int a_level, bool a_draw) {
        int column = 1;
        for (const Key& key : keys) {
            const bool isLast = &key == &keys.back();
            if (!key.isShown || (a_level == 2 && !isLast))
                continue;
            const std::wstring meaning = a_level == 0 || isLast ? std::wstring(L" ") + key.meaning : L"";
            if (a_draw) {
                a_cells.Write(column, row, key.key, EInkDim, true);
                a_cells.Write(column + Length(key.key), row, meaning, EInkDim);
            }
            column += Length(key.key) + Length(meaning) + 2;
        }
        return column - 2;
    };
    int level = 0;
    while (level < 2 && lay(level, false) > width)
        ++level;
    lay(level, true);
    a_cells.Reverse(0, row, width, EInkDim);
}

struct FittingColumns {
    std::vector<std::size_t> shown;
    int gap = 0; // before each
};

// Where not all columns of the table fit, the open goes first, and the volume last.
FittingColumns FitColumns(std::span<const int> a_widths, int a_room)
{
    FittingColumns fitting;
    for (const std::vector<std::size_t>& kept :
         std::vector<std::vector<std::size_t>>{{0, 1, 2, 3, 4}, {1, 2, 3, 4}, {3, 4}, {3}}) {
        int room = a_room;
        for (const std::size_t place : kept)
            room -= a_widths[place];
        room /= static_cast<int>(kept.size());
        fitting = {kept, std::clamp(room, 1, 3)};
        if (room >= 1)
            break;
    }
    return fitting;
}

// The newest candle on top.
void DrawTable(const ScreenModel& a_model, ScreenCells& a_cells, ScreenArea a_area)
{
    struct Column {
        const wchar_t* title;
        ESeriesId seriesId;
    };
    static constexpr std::array<Column, 5> S_columns = {{{L"otwarcie", IntervalOpen},
                                                         {L"maks.", IntervalMax},
                                                         {L"min.", IntervalMin},
                                                         {L"zamkn.", Price},
                                                         {L"wolumen", Volume}}};
    const CandleColumns candles(a_model.data.candles);
    const IntervalAndMultiplicity interval = a_model.data.interval;
    const std::size_t rows =
        std::min(candles.GetCount(), static_cast<std::size_t>(std::max(a_area.height - 1, 0)));
    const auto rowOf = [&](std::size_t a_line) { return candles.GetCount() - 1 - a_line; };
    const bool isLong = rows > 0 && (interval.GetInterval() >= EIntervalDay ||
                                     !candles.GetTime(rowOf(0)).SameDay(candles.GetTime(rowOf(rows - 1))));
    std::vector<std::wstring> times;
    for (std::size_t line = 0; line < rows; ++line)
        times.push_back(isLong ? ScreenTexts::LongCandleTime(candles.GetTime(rowOf(line)), interval)
                               : ScreenTexts::CandleTime(candles.GetTime(rowOf(line)), interval));
    const int timeWidth = rows > 0 ? Length(times.front()) : 5;

    std::array<std::vector<std::wstring>, S_columns.size()> texts;
    std::array<int, S_columns.size()> widths{};
    for (std::size_t place = 0; place < S_columns.size(); ++place) {
        std::vector<double> values;
        for (std::size_t line = 0; line < rows; ++line)
            values.push_back(candles.Get(S_columns[place].seriesId, rowOf(line)));
        if (S_columns[place].seriesId == Volume) {
            texts[place] = ScreenTexts::Volumes(values);
        } else {
            for (const double value : values)
                texts[place].push_back(ScreenTexts::Price(value, a_model.data.decimals));
        }
        widths[place] = Length(S_columns[place].title);
        for (const std::wstring& text : texts[place])
            widths[place] = std::max(widths[place], Length(text));
    }
    const auto [shown, gap] = FitColumns(widths, a_area.width - 1 - timeWidth);

    a_cells.Write(a_area.left + 1, a_area.top, L"czas", EInkDim);
    for (std::size_t line = 0; line < rows; ++line)
        a_cells.Write(a_area.left + 1, a_area.top + 1 + static_cast<int>(line), times[line], EInkDim);
    int end = a_area.left + 1 + timeWidth;
    for (const std::size_t place : shown) {
        end += gap + widths[place];
        if (end > a_area.left + a_area.width)
            return;
        a_cells.WriteBefore(end, a_area.top, S_columns[place].title, EInkDim);
        for (std::size_t line = 0; line < rows; ++line)
            a_cells.WriteBefore(end, a_area.top + 1 + static_cast<int>(line), texts[place][line],
                                S_columns[place].seriesId == Price ? candles.GetInk(rowOf(line))
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

// Volumes outside, prices inside; a bar in the background of each side grows from the middle with its share of the
// largest volume.
void DrawBook(const ScreenModel& a_model, ScreenCells& a_cells, ScreenArea a_area)
{
    const int half = a_area.width / 2;
    const int middle = a_area.left + half;
    const int right = a_area.left + a_area.width;
    a_cells.Write(a_area.left, a_area.top, L"wolumen", EInkDim);
    a_cells.WriteBefore(middle - 1, a_area.top, L"kupno", EInkUp, true);
    a_cells.Write(middle + 1, a_area.top, L"sprzedaż", EInkDown, true);
    a_cells.WriteBefore(right, a_area.top, L"wolumen", EInkDim);

    // One side's levels, then the other's.
    std::vector<Level> levels;
    std::vector<double> volumes;
    for (const bool isBid : {true, false})
        for (std::size_t level = 0; level < S_levels; ++level) {
            levels.push_back(GetLevel(a_model, isBid ? Bid1 : Ask1, isBid ? BidVolume1 : AskVolume1, level));
            volumes.push_back(levels.back().price ? levels.back().volume.value_or(std::nan("")) : 0.0);
        }
    const std::vector<std::wstring> volumeTexts = ScreenTexts::Volumes(volumes);
    double largest = 0.0;
    int priceWidth = 0;
    for (std::size_t place = 0; place < levels.size(); ++place) {
        largest = std::fmax(largest, volumes[place]);
        if (levels[place].price)
            priceWidth =
                std::max(priceWidth, Length(ScreenTexts::Price(*levels[place].price, a_model.data.decimals)));
    }
    if (priceWidth == 0)
        a_cells.Write(a_area.left, a_area.top + 1,
                      a_model.data.offers ? L"brak ofert" : L"brak arkusza zleceń", EInkDim);
    const int volumeWidth = std::min(7, half - 2 - priceWidth);
    for (std::size_t level = 0; level < S_levels && priceWidth > 0; ++level) {
        const int row = a_area.top + 1 + static_cast<int>(level);
        if (row >= a_area.top + a_area.height)
            return;
        a_cells.Put(middle, row, {L'│', EInkDim, false, false});
        for (const bool isBid : {true, false}) {
            const std::size_t place = isBid ? level : S_levels + level;
            if (!levels[place].price)
                continue;
            const EScreenInk ink = isBid ? EInkUp : EInkDown;
            a_cells.WriteBefore(isBid ? a_area.left + std::max(volumeWidth, Length(volumeTexts[place]))
                                      : right,
                                row, volumeTexts[place], ink);
            a_cells.WriteBefore(isBid ? middle - 1 : middle + 1 + priceWidth, row,
                                ScreenTexts::Price(*levels[place].price, a_model.data.decimals), ink);
            if (!(largest > 0.0) || !(volumes[place] > 0.0))
                continue;
            const int length =
                std::clamp(static_cast<int>(std::lround(volumes[place] / largest * (half - 1))), 1, half - 1);
            a_cells.Reverse(isBid ? middle - length : middle + 1, row, length, ink);
        }
    }
}

// The best offers in one line, where there is no room for the book.
void DrawBestOffers(const ScreenModel& a_model, ScreenCells& a_cells, ScreenArea a_area)
{
    const Level bid = GetLevel(a_model, Bid1, BidVolume1, 0);
    const Level ask = GetLevel(a_model, Ask1, AskVolume1, 0);
    if (!a_model.data.offers)
        return a_cells.Write(a_area.left, a_area.top, L"brak arkusza zleceń", EInkDim);
    const auto text = [&](const wchar_t* a_title, const Level& a_level, bool a_withVolume) {
        if (!a_level.price)
            return fmt::format(L"{} –", a_title);
        std::wstring offer =
            fmt::format(L"{} {}", a_title, ScreenTexts::Price(*a_level.price, a_model.data.decimals));
        if (a_withVolume)
            offer += L" × " + ScreenTexts::Volume(a_level.volume.value_or(std::nan("")));
        return offer;
    };
    for (const bool withVolume : {true, false}) {
        const std::wstring left = text(L"K", bid, withVolume);
        const std::wstring right = text(L"S", ask, withVolume);
        if (withVolume && Length(left) + 1 + Length(right) > a_area.width)
            continue;
        a_cells.Write(a_area.left, a_area.top, left, EInkUp);
        if (Length(left) + 1 + Length(right) <= a_area.width)
            a_cells.WriteBefore(a_area.left + a_area.width, a_area.top, right, EInkDown);
        return;
    }
}

void DrawTrades(const ScreenModel& a_model, ScreenCells& a_cells, ScreenArea a_area)
{
    const auto& trades = a_model.data.trades;
    a_cells.Write(a_area.left, a_area.top, L"transakcje", EInkDim);
    if (trades.empty())
        a_cells.Write(a_area.left, a_area.top + 1, L"brak transakcji", EInkDim);
    else
        a_cells.WriteBefore(a_area.left + a_area.width, a_area.top, L"wolumen", EInkDim);
    std::vector<double> volumes;
    volumes.reserve(trades.size());
    for (const auto& trade : trades)
        volumes.push_back(trade.volume);
    const std::vector<std::wstring> volumeTexts = ScreenTexts::Volumes(volumes);
    for (std::size_t place = 0; place < trades.size() && static_cast<int>(place) + 1 < a_area.height;
         ++place) {
        const int row = a_area.top + 1 + static_cast<int>(place);
        const double older = place + 1 < trades.size() ? trades[place + 1].price : trades[place].price;
        const double change = trades[place].price - older;
        a_cells.Write(a_area.left, row, ScreenTexts::Clock(trades[place].time), EInkDim);
        a_cells.WriteBefore(a_area.left + 22, row,
                            ScreenTexts::Price(trades[place].price, a_model.data.decimals) + ArrowOf(change),
                            InkOf(change));
        a_cells.WriteBefore(a_area.left + a_area.width, row, volumeTexts[place]);
    }
}

void DrawCandles(const ScreenModel& a_model, ScreenCells& a_cells, ScreenArea a_area)
{
    if (a_model.asTable)
        return DrawTable(a_model, a_cells, a_area);
    const int tableHeight = a_area.height >= 18 ? std::min(6 + (a_area.height - 18) / 3, 12) : 0;
    ScreenArea chart = a_area;
    chart.height -= tableHeight;
    CandleChart(a_model, a_cells).Draw(chart);
    if (tableHeight > 0)
        DrawTable(a_model, a_cells,
                  {a_area.left, a_area.top + chart.height + 1, a_area.width, tableHeight - 1});
}

} // namespace

ScreenCells RenderScreen(const ScreenModel& a_model, int a_width, int a_height)
{
    ScreenCells cells(a_width, a_height);
    DrawHeader(a_model, cells);
    if (cells.GetHeight() >= 3)
        DrawPrice(a_model, cells);
    const ScreenArea body{0, 2, cells.GetWidth(), cells.GetHeight() - 3};
    if (body.height > 0 && body.width >= S_widthWithPanel) {
        const int left = body.width - S_panelWidth - 2;
        for (int row = body.top; row < body.top + body.height; ++row)
            cells.Put(left, row, {L'│', EInkDim, false, false});
        DrawCandles(a_model, cells, {body.left, body.top, left, body.height});
        const ScreenArea panel{left + 1, body.top, S_panelWidth, body.height};
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
