#include "series/DataSeriesSet.h"

#include "aggregation/Aggregator.h"
#include "platform/CodePage.h"
#include "series/FieldAim.h"
#include "series/Series.h"
#include "time/KalventoException.h"
#include "velo/Refuse.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <istream>
#include <iterator>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <type_traits>

using kalvento::internal::Refuse;

namespace {

// The binary form is the memory of a little-endian machine.
static_assert(std::endian::native == std::endian::little);
static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == 8);

// Entries read at a time, and the most that a list may hold beyond what its stream had.
constexpr std::size_t S_pieceEntries = 32768;
// Empty columns that a count may claim beyond what its stream had.
constexpr std::size_t S_mostMissingColumns = 64;

class NoDataException : public std::exception {
public:
    const char* what() const noexcept override { return "Obiekt nie zawiera danych"_cp1250; }
};

template<class Element>
DataSeriesSet::Columns MakeColumns(const std::set<Element>& a_series)
{
    if (a_series.empty())
        throw std::invalid_argument("zbiór serii jest pusty: a_series"_cp1250);

    DataSeriesSet::Columns columns;
    columns.reserve(a_series.size());
    for (const Element& series : a_series) {
        if constexpr (std::is_same_v<Element, DSProp>)
            columns.emplace_back(series.GetSeriesID(), std::vector<double>());
        else
            columns.emplace_back(series, std::vector<double>());
    }
    return columns;
}

// What the stream lacks stays zero.
template<class Number>
Number ReadNumber(std::istream& a_stream)
{
    Number number{};
    a_stream.read(reinterpret_cast<char*>(&number), sizeof number);
    return number;
}

template<class Number>
void WriteNumber(std::ostream& a_stream, Number a_number)
{
    a_stream.write(reinterpret_cast<const char*>(&a_number), sizeof a_number);
}

void CheckCount(std::uint64_t a_count, std::size_t a_limit)
{
    if (a_count > a_limit)
        throw std::length_error("Za duża liczba elementów w bloku danych"_cp1250);
}

template<class Value>
void ReadList(std::istream& a_stream, std::vector<Value>& a_values)
{
    static_assert(std::is_trivially_copyable_v<Value>);
    const auto count = ReadNumber<std::uint64_t>(a_stream);
    a_values.clear();
    CheckCount(count, a_values.max_size());

    // Memory is taken at once as far as the stream can tell that the values are there. The pieces are small enough to
    // be still in the processor's cache when the stream fills what resize has zeroed.
    const std::streamsize available = a_stream && count > 0 ? a_stream.rdbuf()->in_avail() : 0;
    if (available > 0)
        a_values.reserve(
            std::min<std::uint64_t>(count, static_cast<std::uint64_t>(available) / sizeof(Value)));
    while (a_values.size() < count) {
        const std::size_t read = a_values.size();
        const std::size_t piece = std::min<std::uint64_t>(S_pieceEntries, count - read);
        a_values.resize(read + piece);
        a_stream.read(reinterpret_cast<char*>(a_values.data() + read),
                      static_cast<std::streamsize>(piece * sizeof(Value)));
        if (!a_stream)
            break;
    }
}

template<class Value>
void WriteList(std::ostream& a_stream, const std::vector<Value>& a_values)
{
    static_assert(std::is_trivially_copyable_v<Value>);
    WriteNumber<std::uint64_t>(a_stream, a_values.size());
    if (!a_values.empty())
        a_stream.write(reinterpret_cast<const char*>(a_values.data()),
                       static_cast<std::streamsize>(a_values.size() * sizeof(Value)));
}

} // namespace

DataSeriesSet::DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity)
    : m_intervalData(a_interval, a_multiplicity)
{}

DataSeriesSet::DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity,
                             const std::set<ESeriesId>& a_series)
    : m_columns(MakeColumns(a_series)), m_intervalData(a_interval, a_multiplicity)
{}

DataSeriesSet::DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity,
                             const std::set<DSProp>& a_series)
    : m_columns(MakeColumns(a_series)), m_intervalData(a_interval, a_multiplicity)
{}

DataSeriesSet::DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity,
                             std::vector<NDateTime>&& a_times, Columns&& a_columns)
    : m_columns(std::move(a_columns)), m_times(std::move(a_times)), m_intervalData(a_interval, a_multiplicity)
{}

DataSeriesSet::DataSeriesSet(std::istream& a_stream)
{
    Read(a_stream);
}

DataSeriesSet::iterator DataSeriesSet::find(ESeriesId a_seriesId)
{
    return std::ranges::find(m_columns, a_seriesId, &Column::first);
}

DataSeriesSet::const_iterator DataSeriesSet::find(ESeriesId a_seriesId) const
{
    return std::ranges::find(m_columns, a_seriesId, &Column::first);
}

bool DataSeriesSet::GetTimes(NDateTime& a_first, NDateTime& a_last) const
{
    if (m_times.empty())
        return false;
    a_first = m_times.front();
    a_last = m_times.back();
    return true;
}

std::set<ESeriesId> DataSeriesSet::GetSeries() const
{
    std::set<ESeriesId> series;
    for (const Column& column : m_columns)
        series.insert(series.end(), column.first);
    return series;
}

Record DataSeriesSet::GetLastRecord() const
{
    if (m_times.empty())
        throw NoDataException();

    Record::Values values;
    values.reserve(m_columns.size() + 3); // room to become a candle, as every record has
    for (const auto& [seriesId, column] : m_columns)
        values.emplace_back(seriesId, column.empty() ? 0.0 : column.back());
    return Record(m_times.back(), std::move(values));
}

bool DataSeriesSet::AddData(const Record& a_record)
{
    if (a_record.SeriesCount() != m_columns.size())
        return false;
    const NDateTime& time = a_record.GetTime();
    if (!m_times.empty() && (m_times.back() > time || m_times.back() == time))
        return false;

    m_times.push_back(time);
    auto column = m_columns.begin();
    for (const Record::Value& value : a_record) {
        column->second.push_back(value.second);
        ++column;
    }
    return true;
}

bool DataSeriesSet::AddNewSeries(ESeriesId a_seriesId, const std::vector<double>& a_values)
{
    if (a_seriesId == Time)
        return false;
    const auto column = find(a_seriesId);
    if (column != end()) {
        column->second = a_values;
    } else {
        m_columns.emplace_back(a_seriesId, a_values);
        Sort();
    }
    return true;
}

bool DataSeriesSet::AddNewSeries(ESeriesId a_seriesId, std::vector<double>::const_iterator a_first,
                                 std::vector<double>::const_iterator a_last)
{
    if (a_seriesId == Time)
        return false;
    const auto column = find(a_seriesId);
    if (column != end()) {
        column->second.insert(column->second.begin(), a_first, a_last);
    } else {
        m_columns.emplace_back(a_seriesId, std::vector<double>(a_first, a_last));
        Sort();
    }
    return true;
}

void DataSeriesSet::SetNewTimes(std::vector<NDateTime>::const_iterator a_first,
                                std::vector<NDateTime>::const_iterator a_last)
{
    // A new vector, since the range may be a part of the old one.
    m_times = std::vector<NDateTime>(a_first, a_last);
}

void DataSeriesSet::RemoveAllRecords()
{
    for (Column& column : m_columns)
        column.second.clear();
    m_times.clear();
}

void DataSeriesSet::ReserveSize(std::size_t a_size)
{
    if (!m_times.empty())
        return;
    for (Column& column : m_columns)
        column.second.reserve(a_size);
    m_times.reserve(a_size);
}

void DataSeriesSet::AddAggregationSeries()
{
    AddCandleColumns(m_times.size());
}

void DataSeriesSet::DeleteAggregationSeries()
{
    std::erase_if(m_columns, [](const Column& a_column) {
        return VeloTools::Series::IsAggregationSeries(a_column.first);
    });
}

bool DataSeriesSet::AgregateData(ESeriesId a_main, Aggregator& a_aggregator, std::vector<double*>& a_columns)
{
    const auto isShort = [this](const Column& a_column) { return a_column.second.size() < m_times.size(); };
    if (std::ranges::any_of(m_columns, isShort))
        return Refuse("DataSeriesSet::AgregateData", __LINE__, "Ilość danych w seriach jest różna"_cp1250);
    if (!AimColumns(a_main, a_columns))
        return false;

    const unsigned int rows = a_aggregator.Aggregate(
        m_intervalData.GetInterval(), static_cast<unsigned short>(m_intervalData.GetMultiplicity()),
        static_cast<unsigned int>(m_times.size()), m_times.data(), a_columns);
    return FinishAggregation(rows, a_aggregator);
}

void DataSeriesSet::Read(std::istream& a_stream)
{
    if (ReadNumber<std::int32_t>(a_stream) != BinaryVersion)
        throw KalventoException("DataSeriesSet::Read", __LINE__, "Nieznany typ wersji"_cp1250);
    Read_v1(a_stream);
}

void DataSeriesSet::Write(std::ostream& a_stream) const
{
    WriteNumber<std::int32_t>(a_stream, BinaryVersion);
    WriteNumber<std::uint64_t>(a_stream, m_columns.size());
    for (const auto& [seriesId, values] : m_columns) {
        WriteNumber<std::uint32_t>(a_stream, seriesId);
        WriteList(a_stream, values);
    }
    WriteList(a_stream, m_times);
    WriteNumber<std::uint32_t>(a_stream, m_intervalData.GetInterval());
    WriteNumber<std::uint32_t>(a_stream, m_intervalData.GetMultiplicity());
}

bool DataSeriesSet::IsValid() const
{
    const auto differs = [this](const Column& a_column) { return a_column.second.size() != m_times.size(); };
    if (std::ranges::any_of(m_columns, differs))
        return Refuse("DataSeriesSet::IsValid", __LINE__, "Ilość danych w seriach jest różna"_cp1250);
    if (!m_intervalData.IsValid())
        return false;

    const auto has = [this](ESeriesId a_seriesId) { return find(a_seriesId) != end(); };
    if (m_intervalData.IsSingleTick()) {
        if (has(IntervalOpen) || has(IntervalMax) || has(IntervalMin)) {
            return Refuse(
                "DataSeriesSet::IsValid", __LINE__,
                "Obiekt dla interwału tikowego i krotniści 1 zawiera niedozwoloną serię: open, min, max"_cp1250);
        }
        return true;
    }
    if (!has(IntervalOpen) || !has(IntervalMax) || !has(IntervalMin)) {
        constexpr const char* message =
            "Obiekt dla interwału {} i krotniści {} nie zawiera serii: open, min, max"_cp1250;
        return Refuse("DataSeriesSet::IsValid", __LINE__,
                      fmt::format(fmt::runtime(message),
                                  static_cast<std::uint32_t>(m_intervalData.GetInterval()),
                                  static_cast<std::int32_t>(m_intervalData.GetMultiplicity())));
    }
    return true;
}

void DataSeriesSet::Read_v1(std::istream& a_stream)
{
    const auto columnCount = ReadNumber<std::uint64_t>(a_stream);
    CheckCount(columnCount, m_columns.max_size() - m_columns.size());
    std::size_t missing = 0;
    for (std::uint64_t column = 0; column < columnCount && missing < S_mostMissingColumns; ++column) {
        const auto seriesId = static_cast<ESeriesId>(ReadNumber<std::uint32_t>(a_stream));
        std::vector<double> values;
        ReadList(a_stream, values);
        m_columns.emplace_back(seriesId, std::move(values));
        if (!a_stream)
            ++missing;
    }
    ReadList(a_stream, m_times);
    const auto interval = static_cast<EInterval>(ReadNumber<std::uint32_t>(a_stream));
    m_intervalData.Set(interval, ReadNumber<std::uint32_t>(a_stream));
}

void DataSeriesSet::Sort()
{
    std::ranges::stable_sort(m_columns, {}, &Column::first);
}

void DataSeriesSet::DecreaseSize(std::size_t a_size)
{
    for (Column& column : m_columns)
        if (column.second.size() > a_size)
            column.second.resize(a_size);
    if (m_times.size() > a_size)
        m_times.resize(a_size);
}

DataSeriesSet::CandleColumns DataSeriesSet::AddCandleColumns(std::size_t a_size)
{
    if (find(IntervalOpen) != end())
        throw std::runtime_error("Obiekt zawiera już serie open"_cp1250);
    if (find(IntervalMax) != end())
        throw std::runtime_error("Obiekt zawiera już serie max"_cp1250);
    if (find(IntervalMin) != end())
        throw std::runtime_error("Obiekt zawiera już serie min"_cp1250);

    // Everything that can fail comes before the set changes.
    Columns candleColumns(3);
    candleColumns[0].first = IntervalOpen;
    candleColumns[1].first = IntervalMax;
    candleColumns[2].first = IntervalMin;
    for (Column& column : candleColumns)
        column.second.resize(a_size);
    m_columns.reserve(m_columns.size() + candleColumns.size());
    std::ranges::move(candleColumns, std::back_inserter(m_columns));
    Sort();
    return {&find(IntervalOpen)->second, &find(IntervalMax)->second, &find(IntervalMin)->second};
}

bool DataSeriesSet::AimColumns(ESeriesId a_main, std::vector<double*>& a_columns)
{
    kalvento::internal::FieldAim aim(a_main, a_columns);
    for (auto& [seriesId, values] : m_columns)
        aim.Aim(seriesId, values.data());
    if (aim.IsComplete())
        return true;
    return Refuse(
        "DataSeriesSet::AgregateData", __LINE__,
        "Serie nie odpowiadają polom agregacji: wymagane po jednej serii open, max, min i głównej"_cp1250);
}

bool DataSeriesSet::FinishAggregation(std::size_t a_rows, const Aggregator& a_aggregator)
{
    if (a_rows == 0)
        return Refuse("DataSeriesSet::AgregateData", __LINE__,
                      "Ilość zagregowanych rekordów wynosi 0"_cp1250);
    DecreaseSize(a_rows);
    m_intervalData.Set(a_aggregator.GetOutputInterval(), a_aggregator.GetOutputIntervalMultiple());
    return true;
}

bool DataSeriesSet::AgregateTicks(ESeriesId a_main, Aggregator& a_aggregator, std::vector<double*>& a_columns)
{
    const std::size_t ticks = m_times.size();
    const auto isShort = [ticks](const Column& a_column) { return a_column.second.size() < ticks; };
    if (std::ranges::any_of(m_columns, isShort)) {
        AddCandleColumns(ticks);
        return AgregateData(a_main, a_aggregator, a_columns);
    }

    const CandleColumns candles = AddCandleColumns(0);
    const auto resizeCandles = [&candles](std::size_t a_size) {
        candles.open->resize(a_size);
        candles.high->resize(a_size);
        candles.low->resize(a_size);
    };
    if (!AimColumns(a_main, a_columns)) {
        resizeCandles(ticks);
        return false;
    }
    std::size_t rows = 0;
    try {
        kalvento::internal::CandleRoom room{candles.open, candles.high, candles.low};
        rows = a_aggregator.AggregateTicksGrowing(static_cast<unsigned int>(ticks), m_times.data(), a_columns,
                                                  room);
    } catch (...) {
        resizeCandles(ticks);
        throw;
    }
    resizeCandles(rows == 0 ? ticks : rows);
    return FinishAggregation(rows, a_aggregator);
}
