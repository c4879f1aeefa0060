#include "sql_provider/SqlQueries.h"

#include "platform/CodePage.h"
#include "sql_provider/SqlRowForm.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>

namespace {

std::uint64_t ToNumber(std::int64_t a_value)
{
    return a_value < 0 ? 0 : static_cast<std::uint64_t>(a_value);
}

std::map<int, std::set<DSProp>> ReadSeries(pqxx::transaction_base& a_transaction, const std::string& a_where)
{
    std::map<int, std::set<DSProp>> series;
    for (const pqxx::row& row :
         a_transaction.exec("SELECT instrument, id, fold, label, min_precision, max_precision FROM series"
                            " JOIN instruments ON number = instrument" +
                            a_where + " ORDER BY place"))
        series[row[0].as<int>()].emplace(
            static_cast<ESeriesId>(row[1].as<std::uint32_t>()),
            static_cast<EAggrType>(row[2].as<std::uint32_t>()), SqlRowForm::ReadText(row[3]),
            static_cast<EPrecision>(row[4].as<int>()), static_cast<EPrecision>(row[5].as<int>()));
    return series;
}

std::map<int, std::vector<std::wstring>> ReadGroups(pqxx::transaction_base& a_transaction,
                                                    const std::string& a_where)
{
    std::map<int, std::vector<std::wstring>> groups;
    for (const pqxx::row& row :
         a_transaction.exec("SELECT instrument, name FROM groups JOIN instruments ON number = instrument" +
                            a_where + " ORDER BY place"))
        groups[row[0].as<int>()].push_back(SqlRowForm::ReadText(row[1]));
    return groups;
}

NDateTime DayOf(const pqxx::field& a_day, const NDateTime& a_absent)
{
    if (a_day.is_null())
        return a_absent;
    const std::string_view text = a_day.c_str();
    if (text.size() != 10)
        throw std::runtime_error("Nieczytelna data w bazie"_cp1250);
    const std::string day(text);
    return {std::stoul(day.substr(0, 4)), std::stoul(day.substr(5, 2)), std::stoul(day.substr(8, 2))};
}

// The first row whose day compares so with a_day; the count of rows where there is none.
std::uint64_t FindDay(pqxx::transaction_base& a_transaction, const SqlQueries::Shape& a_shape,
                      const std::string& a_day, const char* a_comparison)
{
    const pqxx::result found = a_transaction.exec_params(
        std::string("SELECT position FROM rows WHERE instrument = $1 AND day ") + a_comparison +
            " $2::date AND position < $3 ORDER BY day, position LIMIT 1",
        a_shape.number, a_day, SqlQueries::ToPosition(a_shape.rowCount));
    return found.empty() ? a_shape.rowCount : ToNumber(found[0][0].as<std::int64_t>());
}

} // namespace

std::int64_t SqlQueries::ToPosition(std::uint64_t a_position)
{
    constexpr auto highest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::int64_t>(std::min(a_position, highest));
}

std::optional<SqlQueries::Shape> SqlQueries::FindShape(pqxx::transaction_base& a_transaction,
                                                       const std::string& a_isin)
{
    const pqxx::result found = a_transaction.exec_params(
        "SELECT number, interval_kind, multiplicity, row_count FROM instruments WHERE isin = $1",
        SqlRowForm::WriteBytes(a_isin));
    if (found.empty())
        return std::nullopt;
    return Shape{found[0][0].as<int>(),
                 IntervalAndMultiplicity(static_cast<EInterval>(found[0][1].as<std::uint32_t>()),
                                         found[0][2].as<std::uint32_t>()),
                 ToNumber(found[0][3].as<std::int64_t>())};
}

std::vector<StoreInstrument> SqlQueries::ReadInstruments(pqxx::transaction_base& a_transaction,
                                                         const std::optional<std::string>& a_isin)
{
    std::vector<StoreInstrument> instruments;
    const std::string where =
        a_isin ? " WHERE isin = " + a_transaction.quote(SqlRowForm::WriteBytes(*a_isin)) : "";
    const pqxx::result found = a_transaction.exec(
        "SELECT number, isin, short_name, long_name, market, interval_kind, multiplicity, live,"
        " to_char(earliest.day, 'YYYY-MM-DD'), to_char(latest.day, 'YYYY-MM-DD') FROM instruments"
        " LEFT JOIN rows earliest ON earliest.instrument = number AND earliest.position = 0"
        " LEFT JOIN rows latest ON latest.instrument = number AND latest.position = row_count - 1" +
        where);
    const auto series = ReadSeries(a_transaction, where);
    const auto groups = ReadGroups(a_transaction, where);
    for (const pqxx::row& row : found) {
        const auto ownSeries = series.find(row[0].as<int>());
        if (ownSeries == series.end())
            continue; // it came or went between the statements
        StoreInstrument& instrument = instruments.emplace_back();
        instrument.isin = SqlRowForm::ReadBytes(row[1]);
        instrument.shortName = SqlRowForm::ReadBytes(row[2]);
        instrument.longName = SqlRowForm::ReadBytes(row[3]);
        instrument.market = SqlRowForm::ReadBytes(row[4]);
        instrument.interval.Set(static_cast<EInterval>(row[5].as<std::uint32_t>()),
                                row[6].as<std::uint32_t>());
        instrument.live = row[7].as<bool>();
        // Never given out twice: an instrument that was removed and made anew has other rows.
        instrument.generation = static_cast<std::uint64_t>(row[0].as<int>());
        instrument.firstDay = DayOf(row[8], NDateTime(1900, 1, 2));
        instrument.lastDay = DayOf(row[9], NDateTime(1900, 1, 1));
        instrument.series = ownSeries->second;
        if (const auto own = groups.find(row[0].as<int>()); own != groups.end())
            instrument.groups = own->second;
    }
    return instruments;
}

std::uint64_t SqlQueries::FindRow(pqxx::transaction_base& a_transaction, const std::string& a_isin,
                                  const NDateTime& a_time)
{
    const auto shape = FindShape(a_transaction, a_isin);
    const auto time = SqlRowForm::WriteTime(a_time);
    if (!shape)
        return 0;
    // A time that no row can have lies before all of them, such as the zero time, or behind, such as the year 9999.
    if (!time)
        return a_time.ToDouble() > 0.0 ? shape->rowCount : 0;
    // The index finds the day; within it the rows are compared as everywhere, by NDateTime, whose order isn't that of
    // any column.
    std::uint64_t first = FindDay(a_transaction, *shape, time->day, ">=");
    std::uint64_t last = FindDay(a_transaction, *shape, time->day, ">");
    while (first < last) {
        const std::uint64_t middle = first + (last - first) / 2;
        const pqxx::row found =
            a_transaction.exec_params1(std::string("SELECT ") + SqlRowForm::S_timeColumns +
                                           " FROM rows WHERE instrument = $1 AND position = $2",
                                       shape->number, ToPosition(middle));
        if (SqlRowForm::ReadTime(found, 0) < a_time)
            first = middle + 1;
        else
            last = middle;
    }
    return first;
}
