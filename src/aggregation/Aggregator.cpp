#include "aggregation/Aggregator.h"

#include "aggregation/AggrTickWindow.h"
#include "aggregation/AggrWindowsFactory.h"
#include "aggregation/FoldKernels.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

#include <algorithm>
#include <bit>
#include <cstdint>

using kalvento::internal::CandleRoom;
using kalvento::internal::ColumnSum;
using kalvento::internal::FoldExtremes;
using kalvento::internal::NDateTimeWords;
using kalvento::internal::NotEarlier;
using kalvento::internal::WindowScope;

namespace {

// Places of the fields in a row.
constexpr std::size_t S_open = 0;
constexpr std::size_t S_high = 1;
constexpr std::size_t S_low = 2;
constexpr std::size_t S_main = 3;

// Rows of one candle folded at a time: enough for the inner loops, few enough for the cache.
constexpr std::size_t S_rowsAtOnce = 2048;
constexpr std::size_t S_firstRoom = 1024;

bool IsUnset(const NDateTime& a_time)
{
    return std::bit_cast<std::uint64_t>(a_time.ToDouble()) == 0 && a_time.IsValid() &&
           (NDateTimeWords::Calendar(a_time) | NDateTimeWords::Clock(a_time)) == 0;
}

/// Before the first row there is no last time, and nothing is late.
bool IsLateInAnyOrder(const NDateTime& a_time, const NDateTime& a_lastTime)
{
    return a_time < a_lastTime && !IsUnset(a_lastTime);
}

/// As IsLateInAnyOrder; most rows are shown to be in time by a few comparisons.
[[gnu::always_inline]] inline bool IsLate(const NDateTime& a_time, const NDateTime& a_lastTime)
{
    const bool isPlain = a_lastTime.IsValid() && a_lastTime.ToDouble() >= 0.0;
    return !(isPlain && NotEarlier(a_lastTime, a_time)) && IsLateInAnyOrder(a_time, a_lastTime);
}

/// Candles stamped with their window's end are later than the rows that continue them, so under these time results an
/// earlier row isn't taken for a late one.
bool RefusesLateRows(EAggrTimeResult a_timeResult)
{
    return a_timeResult != EMetaStockWindowEnd && a_timeResult != EWindowBorder;
}

/// a_call with the interval, one of the eight that have windows, as its template argument.
template<typename Call>
auto WithInterval(EInterval a_interval, const Call& a_call)
{
    switch (a_interval) {
    case EIntervalTick:
        return a_call.template operator()<EIntervalTick>();
    case EIntervalSecond:
        return a_call.template operator()<EIntervalSecond>();
    case EIntervalMinute:
        return a_call.template operator()<EIntervalMinute>();
    case EIntervalHour:
        return a_call.template operator()<EIntervalHour>();
    case EIntervalDay:
        return a_call.template operator()<EIntervalDay>();
    case EIntervalWeek:
        return a_call.template operator()<EIntervalWeek>();
    case EIntervalMonth:
        return a_call.template operator()<EIntervalMonth>();
    default:
        return a_call.template operator()<EIntervalYear>();
    }
}

/// Columns of a history on their way to candles.
class Columns {
public:
    Columns(const std::vector<double*>& a_columns, CandleRoom* a_room) : m_columns(a_columns), m_room(a_room)
    {
        const auto first = a_columns.begin() + (a_room == nullptr ? S_open : S_main);
        if (std::find(first, a_columns.end(), nullptr) != a_columns.end())
            throw KalventoException("Aggregator::Aggregate", __LINE__,
                                    "Wyjątek Aggregator! Liczba pól niezgodna z inicjacją."_cp1250);
        if (m_room == nullptr)
            std::copy_n(a_columns.begin(), 3, m_ohl);
        else
            TakeRoom();
    }

    const double* operator[](std::size_t a_field) const { return m_columns[a_field]; }

    /// Row a_candle of every column takes the running values.
    [[gnu::always_inline]] void Write(std::size_t a_candle, const std::vector<AggrValue>& a_values)
    {
        if (a_candle >= m_roomRows)
            Grow();
        const AggrValue& main = a_values.front();
        m_ohl[S_open][a_candle] = main.m_open;
        m_ohl[S_high][a_candle] = main.m_high;
        m_ohl[S_low][a_candle] = main.m_low;
        for (std::size_t field = 0; field < a_values.size(); ++field)
            m_columns[S_main + field][a_candle] = a_values[field].m_close;
    }

private:
    void TakeRoom()
    {
        m_roomRows = std::min({m_room->open->size(), m_room->high->size(), m_room->low->size()});
        m_ohl[S_open] = m_room->open->data();
        m_ohl[S_high] = m_room->high->data();
        m_ohl[S_low] = m_room->low->data();
    }

    void Grow()
    {
        const std::size_t rows = std::max(S_firstRoom, 2 * m_roomRows);
        m_room->open->resize(rows);
        m_room->high->resize(rows);
        m_room->low->resize(rows);
        TakeRoom();
    }

    const std::vector<double*>& m_columns;
    CandleRoom* m_room;
    double* m_ohl[3] = {};
    std::size_t m_roomRows = SIZE_MAX;
};

/// The first row of a candle.
[[gnu::always_inline]] inline void SetRow(std::vector<AggrValue>& a_values, const Columns& a_columns,
                                          bool a_useOhl, std::size_t a_row)
{
    AggrValue& main = a_values.front();
    main.m_close = a_columns[S_main][a_row];
    main.m_open = a_useOhl ? a_columns[S_open][a_row] : main.m_close;
    main.m_high = a_useOhl ? a_columns[S_high][a_row] : main.m_close;
    main.m_low = a_useOhl ? a_columns[S_low][a_row] : main.m_close;
    for (std::size_t field = 1; field < a_values.size(); ++field)
        a_values[field].m_close = a_columns[S_main + field][a_row];
}

/// Where a run of rows after a_row must end at the latest.
template<bool IsTick>
[[gnu::always_inline]] inline std::size_t RunLimit(AggrBase& a_window, std::size_t a_row, std::size_t a_count)
{
    const std::size_t limit = std::min(a_count, a_row + S_rowsAtOnce);
    if constexpr (IsTick)
        return std::min(limit, a_row + 1 + static_cast<AggrTickWindow&>(a_window).RowsLeft());
    return limit;
}

/// Folds further rows of one candle in, column by column: the bits are those of one row at a time.
[[gnu::always_inline]] inline void FoldRows(std::vector<AggrValue>& a_values, std::vector<ColumnSum>& a_sums,
                                            const Columns& a_columns, bool a_useOhl, std::size_t a_first,
                                            std::size_t a_end)
{
    const std::size_t count = a_end - a_first;
    AggrValue& main = a_values.front();
    const double* close = a_columns[S_main];
    const double* open = a_useOhl ? a_columns[S_open] : close;
    const double* high = a_useOhl ? a_columns[S_high] : close;
    const double* low = a_useOhl ? a_columns[S_low] : close;
    switch (main.GetType()) {
    case EAggrTypeOhlc:
        FoldExtremes(main.m_high, main.m_low, high + a_first, low + a_first, count);
        main.m_close = close[a_end - 1];
        break;
    case EAggrTypeOhlcSum:
        main.m_open = a_sums.front().Add(main.m_open, open + a_first, count);
        main.m_high = a_sums.front().Add(main.m_high, high + a_first, count);
        main.m_low = a_sums.front().Add(main.m_low, low + a_first, count);
        main.m_close = a_sums.front().Add(main.m_close, close + a_first, count);
        break;
    default:
        main.m_open = open[a_end - 1];
        main.m_high = high[a_end - 1];
        main.m_low = low[a_end - 1];
        main.m_close = close[a_end - 1];
        break;
    }
    for (std::size_t field = 1; field < a_values.size(); ++field) {
        AggrValue& value = a_values[field];
        const double* column = a_columns[S_main + field];
        value.m_close = value.GetType() == EAggrTypeSum
                            ? a_sums[field].Add(value.m_close, column + a_first, count)
                            : column[a_end - 1];
    }
}

} // namespace

Aggregator::Aggregator(EInterval a_interval, unsigned short a_multiplicity, EAggrTimeResult a_timeResult,
                       const std::vector<EAggrType>& a_types)
    : m_outputInterval(a_interval),
      m_outputMultiplicity(a_multiplicity),
      m_window(AggrWindowsFactory::GetAggrWindowClass(a_interval, a_multiplicity, a_timeResult))
{
    if (a_multiplicity == 0)
        throw KalventoException(
            "Aggregator::Aggregator", __LINE__,
            "Wyjątek Aggregator! Krotność interwału wyjściowego musi być większa od zera."_cp1250);
    InitAggrTypeForSeries(a_types);
    WithInterval(a_interval, [&]<EInterval Interval>() {
        m_slotCalendar = WindowScope<Interval>::S_slotCalendar;
        m_slotClock = WindowScope<Interval>::S_slotClock;
    });
}

Aggregator::Aggregator(const Aggregator& a_other)
    : m_outputInterval(a_other.m_outputInterval),
      m_outputMultiplicity(a_other.m_outputMultiplicity),
      m_awaitsCurrentRecord(a_other.m_awaitsCurrentRecord),
      m_lastTime(a_other.m_lastTime),
      m_values(a_other.m_values),
      m_slotCalendar(a_other.m_slotCalendar),
      m_slotClock(a_other.m_slotClock)
{
    if (a_other.m_window != nullptr)
        m_window = AggrWindowsFactory::GetAggrWindowClass(m_outputInterval, m_outputMultiplicity,
                                                          a_other.m_window->m_timeResult);
}

Aggregator& Aggregator::operator=(const Aggregator& a_other)
{
    if (this != &a_other)
        *this = Aggregator(a_other);
    return *this;
}

Aggregator::Aggregator(Aggregator&&) noexcept = default;
Aggregator& Aggregator::operator=(Aggregator&&) noexcept = default;
Aggregator::~Aggregator() = default;

void Aggregator::InitAggrTypeForSeries(const std::vector<EAggrType>& a_types)
{
    if (!m_values.empty())
        throw KalventoException("Aggregator::InitAggrTypeForSeries", __LINE__,
                                "Wyjątek Aggregator! Typy agregacji są już zainicjowane."_cp1250);
    if (a_types.empty())
        throw KalventoException("Aggregator::InitAggrTypeForSeries", __LINE__,
                                "Wyjątek Aggregator! Wymagane jest minimum jedno pole oprócz czasu."_cp1250);

    m_values.reserve(a_types.size());
    for (const EAggrType type : a_types) {
        const bool isMain = type <= EAggrTypeOhlcLast;
        if (isMain != m_values.empty())
            throw KalventoException("Aggregator::InitAggrTypeForSeries", __LINE__,
                                    "Wyjątek Aggregator! Niedopuszczalny typ agregacji dla pola."_cp1250);
        m_values.emplace_back(type);
    }
}

inline bool Aggregator::IsInWindow(const NDateTime& a_time)
{
    const std::uint32_t change =
        ((NDateTimeWords::Calendar(a_time) ^ NDateTimeWords::Calendar(m_lastTime)) & m_slotCalendar) |
        ((NDateTimeWords::Clock(a_time) ^ NDateTimeWords::Clock(m_lastTime)) & m_slotClock);
    if (m_lastRowIsInWindow && change == 0)
        return true;
    m_lastRowIsInWindow = m_outputInterval != EIntervalTick;
    return m_window->IsInCurrentWindow(a_time);
}

bool Aggregator::SumWithWindow(NDateTime* a_time, std::vector<double*>* a_fields, bool a_useOhl)
{
    if (m_awaitsCurrentRecord)
        throw KalventoException(
            "Aggregator::SumWithWindow", __LINE__,
            "Wyjątek Aggregator! Wymagane wywołanie SetCurrentRecord po Aggregate."_cp1250);
    if (a_fields->size() < 4)
        throw KalventoException("Aggregator::SumWithWindow", __LINE__,
                                "Wyjątek Aggregator! Wymagane pola na OHLC."_cp1250);
    if (a_fields->size() != m_values.size() + 3)
        throw KalventoException("Aggregator::SumWithWindow", __LINE__,
                                "Wyjątek Aggregator! Liczba pól niezgodna z inicjacją."_cp1250);

    double* const* fields = a_fields->data();
    const EAggrTimeResult timeResult = m_window->m_timeResult;
    AggrValue& main = m_values.front();

    if (RefusesLateRows(timeResult) && IsLate(*a_time, m_lastTime)) {
        // Under ELastRecordTime the window has no time of its own, so the row's time comes back as the zero time.
        // Consumers recognise a refused row by it.
        *a_time = m_window->m_windowTime;
        *fields[S_open] = main.m_open;
        *fields[S_high] = main.m_high;
        *fields[S_low] = main.m_low;
        for (std::size_t field = 0; field < m_values.size(); ++field)
            *fields[S_main + field] = m_values[field].m_close;
        return true;
    }

    const bool inWindow = IsInWindow(*a_time);
    m_lastTime = *a_time;
    if (!inWindow)
        StampWindow(*a_time);
    if (timeResult != ELastRecordTime)
        *a_time = m_window->m_windowTime;

    if (inWindow) {
        main.SumFirstValue(a_useOhl, *fields[S_open], *fields[S_high], *fields[S_low], *fields[S_main]);
        for (std::size_t field = 1; field < m_values.size(); ++field)
            m_values[field].Sum(*fields[S_main + field]);
    } else {
        main.SetFirstValue(a_useOhl, *fields[S_open], *fields[S_high], *fields[S_low], *fields[S_main]);
        for (std::size_t field = 1; field < m_values.size(); ++field)
            m_values[field].Set(*fields[S_main + field]);
    }
    return inWindow;
}

void Aggregator::StampWindow(const NDateTime& a_time)
{
    switch (m_window->m_timeResult) {
    case EFirstRecordTime:
        m_window->m_windowTime = a_time;
        break;
    case EWindowBegin:
        m_window->m_windowTime = m_window->GetBeginingOfWindowTime(a_time, m_window->m_currentWindow);
        break;
    case EMetaStockWindowEnd:
        m_window->m_windowTime = m_window->GetBeginingOfNextWindowTime(a_time, m_window->m_currentWindow);
        break;
    case EWindowBorder:
        m_window->m_windowTime = m_window->GetBorderOfWindowTime(a_time, m_window->m_currentWindow);
        break;
    case ELastRecordTime:
        break;
    }
}

void Aggregator::StartOver()
{
    m_lastTime = NDateTime();
    m_lastRowIsInWindow = false;
    if (m_window != nullptr)
        m_window->ResetOpenWindow();
}

unsigned int Aggregator::Aggregate(EInterval a_inputInterval, unsigned short a_inputMultiplicity,
                                   unsigned int a_count, NDateTime* a_times,
                                   const std::vector<double*>& a_columns)
{
    CheckHistory(a_inputInterval, a_inputMultiplicity, a_count, a_columns.size());
    const bool useOhl = a_inputInterval >= EIntervalSecond || a_inputMultiplicity >= 2;
    return FoldHistory(useOhl, a_count, a_times, a_columns, nullptr);
}

unsigned int Aggregator::AggregateTicksGrowing(unsigned int a_count, NDateTime* a_times,
                                               const std::vector<double*>& a_columns, CandleRoom& a_room)
{
    CheckHistory(EIntervalTick, 1, a_count, a_columns.size());
    return FoldHistory(false, a_count, a_times, a_columns, &a_room);
}

void Aggregator::CheckHistory(EInterval a_inputInterval, unsigned short a_inputMultiplicity,
                              unsigned int a_count, std::size_t a_columnCount) const
{
    if (a_inputMultiplicity == 0)
        throw KalventoException(
            "Aggregator::Aggregate", __LINE__,
            "Wyjątek Aggregator! Krotność interwału wejściowego musi być większa od zera."_cp1250);
    if (m_outputInterval < a_inputInterval ||
        (m_outputInterval == a_inputInterval && m_outputMultiplicity < a_inputMultiplicity))
        throw KalventoException("Aggregator::Aggregate", __LINE__,
                                "Wyjątek Aggregator! Nielegalny kierunek agregacji."_cp1250);
    if (m_values.empty())
        throw KalventoException("Aggregator::Aggregate", __LINE__,
                                "Wyjątek Aggregator! Niezainicjowane typy pól."_cp1250);
    if (a_columnCount != m_values.size() + 3)
        throw KalventoException("Aggregator::Aggregate", __LINE__,
                                "Wyjątek Aggregator! Liczba pól niezgodna z inicjacją."_cp1250);
    if (a_columnCount < 4)
        throw KalventoException("Aggregator::Aggregate", __LINE__,
                                "Wyjątek Aggregator! Agregacja wymaga pól OHL na wynik."_cp1250);
    if (a_count == 0)
        throw KalventoException("Aggregator::Aggregate", __LINE__,
                                "Wyjątek Aggregator! Próba agregacji historii o zerowej długości."_cp1250);
}

unsigned int Aggregator::FoldHistory(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                                     const std::vector<double*>& a_columns, CandleRoom* a_room)
{
    StartOver();
    // The values of the last history are still open: to go on folding without settling them would mix two histories.
    if (m_awaitsCurrentRecord)
        throw KalventoException(
            "Aggregator::SumWithWindow", __LINE__,
            "Wyjątek Aggregator! Wymagane wywołanie SetCurrentRecord po Aggregate."_cp1250);

    // An unknown type raises in the middle of a history, and what is left then is that of one row at a time.
    const bool mayRaise = std::ranges::any_of(
        m_values, [](const AggrValue& a_value) { return a_value.GetType() > EAggrTypeLast; });
    const bool refusesLateRows = RefusesLateRows(m_window->m_timeResult);
    const unsigned int candles =
        mayRaise
            ? FoldRowByRow(a_useOhl, a_count, a_times, a_columns, a_room)
            : WithInterval(m_outputInterval, [&]<EInterval Interval>() {
                  return refusesLateRows
                             ? FoldHistoryOf<Interval, true>(a_useOhl, a_count, a_times, a_columns, a_room)
                             : FoldHistoryOf<Interval, false>(a_useOhl, a_count, a_times, a_columns, a_room);
              });
    m_awaitsCurrentRecord = true;
    return candles;
}

unsigned int Aggregator::FoldRowByRow(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                                      const std::vector<double*>& a_columns, CandleRoom* a_room)
{
    std::vector<double*> columns = a_columns;
    if (a_room != nullptr) {
        std::size_t field = S_open;
        for (std::vector<double>* const room : {a_room->open, a_room->high, a_room->low}) {
            room->resize(std::max<std::size_t>(room->size(), a_count));
            columns[field++] = room->data();
        }
    }
    static_cast<void>(Columns(columns, nullptr)); // raises for a missing one

    std::vector<double> scratch(columns.size());
    std::vector<double*> fields;
    for (double& value : scratch)
        fields.push_back(&value);
    std::size_t candles = 0;
    for (std::size_t row = 0; row < a_count; ++row) {
        for (std::size_t field = 0; field < columns.size(); ++field)
            scratch[field] = columns[field][row];
        candles += SumWithWindow(&a_times[row], &fields, a_useOhl) ? 0 : 1;
        a_times[candles - 1] = a_times[row];
        for (std::size_t field = 0; field < columns.size(); ++field)
            columns[field][candles - 1] = scratch[field];
    }
    return static_cast<unsigned int>(candles);
}

template<EInterval Interval, bool RefusesLate>
unsigned int Aggregator::FoldHistoryOf(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                                       const std::vector<double*>& a_columns, CandleRoom* a_room)
{
    constexpr bool isTick = Interval == EIntervalTick;
    const bool bearsRowTime = m_window->m_timeResult == ELastRecordTime;

    Columns columns(a_columns, a_room);
    std::vector<ColumnSum> sums(m_values.size());
    WindowScope<Interval> scope;
    NDateTime candleTime;
    // A candle is written when the next one opens: its row is never later than the row that opened it, so rows still to
    // be read stay intact.
    std::size_t candles = 0;
    const auto writeCandle = [&] {
        a_times[candles - 1] = candleTime;
        columns.Write(candles - 1, m_values);
    };

    typename WindowScope<Interval>::RunEnd next{0, true, false};
    while (next.row < a_count) {
        const std::size_t row = next.row;
        const NDateTime time = a_times[row];
        if (RefusesLate && !next.isInTime && IsLate(time, m_lastTime)) {
            if (bearsRowTime)
                candleTime = m_window->m_windowTime;
            next = {row + 1, false, false};
            continue;
        }

        m_lastTime = time;
        const bool knownInside = !isTick && !next.isOutside && scope.Holds(time);
        if (knownInside || m_window->IsInCurrentWindow(time)) {
            FoldRows(m_values, sums, columns, a_useOhl, row, row + 1);
        } else {
            if (candles != 0)
                writeCandle();
            StampWindow(time);
            SetRow(m_values, columns, a_useOhl, row);
            ++candles;
            candleTime = m_window->m_windowTime;
        }
        if (!knownInside)
            scope.Open(time, m_window->m_currentWindow, m_outputMultiplicity);

        next = {row + 1, false, false};
        if (!RefusesLate || (time.IsValid() && time.ToDouble() >= 0.0))
            next = scope.template FindRunEnd<RefusesLate>(a_times, row,
                                                          RunLimit<isTick>(*m_window, row, a_count));
        if (next.row > row + 1) {
            FoldRows(m_values, sums, columns, a_useOhl, row + 1, next.row);
            m_lastTime = a_times[next.row - 1];
            if constexpr (isTick)
                static_cast<AggrTickWindow&>(*m_window).CountRows(next.row - row - 1);
        }
        if (bearsRowTime)
            candleTime = m_lastTime;
    }
    writeCandle();
    return static_cast<unsigned int>(candles);
}

void Aggregator::SetCurrentRecord(NDateTime* a_time, std::vector<double*>* a_fields)
{
    StartOver();
    m_awaitsCurrentRecord = false;
    if (a_time != nullptr && a_fields != nullptr)
        SumWithWindow(a_time, a_fields, true);
}

void Aggregator::ClearLastValue()
{
    m_awaitsCurrentRecord = false;
    m_lastTime = NDateTime();
    m_lastRowIsInWindow = false;
    for (AggrValue& value : m_values)
        value.Clear();
}

void Aggregator::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    if (m_window != nullptr)
        m_window->GetWindowLimits(a_time, a_begin, a_end);
}
