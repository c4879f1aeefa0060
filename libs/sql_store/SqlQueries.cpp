#include "sql_store/SqlQueries.h"

#include "platform/CodePage.h"
#include "provider_kit/DamagedData.h"
#include "sql_store/SqlRowForm.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string_view>

namespace {

std::uint64_t ToNumber(std::int64_t a_value)
{
    return a_value < 0 ? 0 : static_cast<std::uint64_t>(a_value);
}

/// Why instruments can't be read, by their numbers.
using Damages = std::map<int, std::string>;

// Reads something of one instrument from an answer already received.
template<class Reading>
void ReadPart(int a_number, Damages& a_damages, const Reading& a_reading)
{
    try {
        a_reading();
    } catch (const std::exception&) {
        a_damages.emplace(a_number, SqlRowForm::ReasonInFlight());
    }
}

std::map<int, std::set<DSProp>> ReadSeries(pqxx::transaction_base& a_transaction, const std::string& a_where,
                                           Damages& a_damages)
{
    std::map<int, std::set<DSProp>> series;
    for (const pqxx::row& row :
         a_transaction.exec("SELECT instrument, id, fold, label, min_precision, max_precision FROM series"
                            " JOIN instruments ON number = instrument" +
                            a_where + " ORDER BY place")) {
        const int number = row[0].as<int>();
        std::set<DSProp>& own = series[number];
        ReadPart(number, a_damages, [&] {
            own.emplace(static_cast<ESeriesId>(row[1].as<std::uint32_t>()),
                        static_cast<EAggrType>(row[2].as<std::uint32_t>()), SqlRowForm::ReadText(row[3]),
                        static_cast<EPrecision>(row[4].as<int>()), static_cast<EPrecision>(row[5].as<int>()));
        });
    }
    return series;
}

std::map<int, std::vector<std::wstring>> ReadGroups(pqxx::transaction_base& a_transaction,
                                                    const std::string& a_where, Damages& a_damages)
{
    std::map<int, std::vector<std::wstring>> groups;
    for (const pqxx::row& row :
         a_transaction.exec("SELECT instrument, name FROM groups JOIN instruments ON number = instrument" +
                            a_where + " ORDER BY place")) {
        const int number = row[0].as<int>();
        ReadPart(number, a_damages, [&] { groups[number].push_back(SqlRowForm::ReadText(row[1])); });
    }
    return groups;
}

NDateTime DayOf(const pqxx::field& a_day, const NDateTime& a_absent)
{
    if (a_day.is_null())
        return a_absent;
    const std::string_view text = a_day.c_str();
    if (text.size() != 10)
        throw DamagedData("Nieczytelna data w bazie"_cp1250);
    const std::string day(text);
    return {std::stoul(day.substr(0, 4)), std::stoul(day.substr(5, 2)), std::stoul(day.substr(8, 2))};
}

// The first row whose day compares to a_day in that way; the count of rows where there is none.
std::uint64_t FindDay(pqxx::transaction_base& a_transaction, const SqlQueries::Shape& a_shape,
                      const std::string& a_day, const char* a_comparison)
{
    const pqxx::result found = a_transaction.exec_params(
        std::string("SELECT position FROM rows WHERE instrument = $1 AND day ") + a_comparison +
            " $2::date AND position < $3 ORDER BY day, position LIMIT 1",
        a_shape.number, a_day, SqlQueries::ToPosition(a_shape.rowCount));
    return found.empty() ? a_shape.rowCount : ToNumber(found[0][0].as<std::int64_t>());
}

// Empty where the instrument is gone.
std::optional<NDateTime> ReadTimeOf(pqxx::transaction_base& a_transaction, const std::string& a_isin,
                                    const SqlQueries::Shape& a_shape, std::uint64_t a_row)
{
    try {
        const pqxx::result found =
            a_transaction.exec_params(std::string("SELECT ") + SqlRowForm::S_timeColumns +
                                          " FROM rows WHERE instrument = $1 AND position = $2",
                                      a_shape.number, SqlQueries::ToPosition(a_row));
        if (!found.empty())
            return SqlRowForm::ReadTime(found[0], 0);
    } catch (...) {
        if (!SqlRowForm::IsDamageInFlight())
            throw;
        throw DamagedData("wiersz "_cp1250 + std::to_string(a_row) + ": " + SqlRowForm::ReasonInFlight());
    }
    SqlQueries::CheckMissing(a_transaction, a_isin, a_shape, a_row);
    return std::nullopt;
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
        SqlRowForm::WriteName(a_isin));
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
        a_isin ? " WHERE isin = " + a_transaction.quote(SqlRowForm::WriteName(*a_isin)) : "";
    const pqxx::result found = a_transaction.exec(
        "SELECT number, isin, short_name, long_name, market, interval_kind, multiplicity, live,"
        " to_char(earliest.day, 'YYYY-MM-DD'), to_char(latest.day, 'YYYY-MM-DD') FROM instruments"
        " LEFT JOIN rows earliest ON earliest.instrument = number AND earliest.position = 0"
        " LEFT JOIN rows latest ON latest.instrument = number AND latest.position = row_count - 1" +
        where);
    Damages damages;
    const auto series = ReadSeries(a_transaction, where, damages);
    const auto groups = ReadGroups(a_transaction, where, damages);
    for (const pqxx::row& row : found) {
        const int number = row[0].as<int>();
        const auto ownSeries = series.find(number);
        if (ownSeries == series.end())
            continue; // it came or went between the statements
        StoreInstrument instrument;
        ReadPart(number, damages, [&] {
            instrument.isin = SqlRowForm::ReadName(row[1]);
            instrument.shortName = SqlRowForm::ReadName(row[2]);
            instrument.longName = SqlRowForm::ReadName(row[3]);
            instrument.market = SqlRowForm::ReadName(row[4]);
        });
        instrument.live = row[7].as<bool>();
        // Never given out twice: an instrument that was removed and recreated has other rows.
        instrument.generation = static_cast<std::uint64_t>(number);
        instrument.series = ownSeries->second;
        if (const auto own = groups.find(number); own != groups.end())
            instrument.groups = own->second;
        ReadPart(number, damages, [&] {
            instrument.interval.Set(static_cast<EInterval>(row[5].as<std::uint32_t>()),
                                    row[6].as<std::uint32_t>());
            instrument.firstDay = DayOf(row[8], NDateTime(1900, 1, 2));
            instrument.lastDay = DayOf(row[9], NDateTime(1900, 1, 1));
        });
        const auto damage = damages.find(number);
        if (damage == damages.end()) {
            instruments.push_back(std::move(instrument));
            continue;
        }
        const std::string text =
            "Uszkodzony opis waloru "_cp1250 + instrument.isin + " w bazie: "_cp1250 + damage->second;
        if (a_isin)
            throw DamagedData(text);
        instrument.fault = CodePage::Cp1250ToWide(text);
        instruments.push_back(std::move(instrument));
    }
    return instruments;
}

std::vector<ESeriesId> SqlQueries::ReadSeriesIds(pqxx::transaction_base& a_transaction, int a_number)
{
    std::vector<ESeriesId> ids;
    for (const pqxx::row& row :
         a_transaction.exec_params("SELECT id FROM series WHERE instrument = $1 ORDER BY place", a_number))
        ids.push_back(static_cast<ESeriesId>(row[0].as<std::uint32_t>()));
    return ids;
}

void SqlQueries::CheckMissing(pqxx::transaction_base& a_transaction, const std::string& a_isin,
                              const Shape& a_shape, std::uint64_t a_row)
{
    const auto now = FindShape(a_transaction, a_isin);
    if (now && now->number == a_shape.number)
        throw DamagedData("brak wiersza "_cp1250 + std::to_string(a_row));
}

std::uint64_t SqlQueries::FindRow(pqxx::transaction_base& a_transaction, const std::string& a_isin,
                                  const NDateTime& a_time)
{
    const auto shape = FindShape(a_transaction, a_isin);
    const auto time = SqlRowForm::WriteTime(a_time);
    if (!shape)
        return 0;
    // A time that no row can have lies before all of them, such as the zero time, or after, such as the year 9999.
    if (!time)
        return a_time.ToDouble() > 0.0 ? shape->rowCount : 0;
    // The index finds the day; within it the rows are compared as everywhere, by NDateTime, whose order isn't that of
    // any column.
    std::uint64_t first = FindDay(a_transaction, *shape, time->day, ">=");
    std::uint64_t last = FindDay(a_transaction, *shape, time->day, ">");
    while (first < last) {
        const std::uint64_t middle = first + (last - first) / 2;
        const auto found = ReadTimeOf(a_transaction, a_isin, *shape, middle);
        if (!found)
            return 0;
        if (*found < a_time)
            first = middle + 1;
        else
            last = middle;
    }
    return first;
}
