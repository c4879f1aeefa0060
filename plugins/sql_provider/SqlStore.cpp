#include "sql_provider/SqlStore.h"

#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "sql_provider/SqlRowForm.h"
#include "sql_provider/SqlSession.h"

#include <algorithm>
#include <limits>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

// A page of rows: the answer of the server is held as text, so a long history is asked for in pieces.
constexpr std::uint64_t S_rowsAPage = 50'000;

std::uint64_t ToNumber(std::int64_t a_value)
{
    return a_value < 0 ? 0 : static_cast<std::uint64_t>(a_value);
}

// Positions beyond what the database can hold are those of no row.
std::int64_t ToPosition(std::uint64_t a_position)
{
    constexpr auto highest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::int64_t>(std::min(a_position, highest));
}

std::map<int, std::set<DSProp>> ReadSeries(pqxx::transaction_base& a_transaction)
{
    std::map<int, std::set<DSProp>> series;
    for (const pqxx::row& row : a_transaction.exec(
             "SELECT instrument, id, fold, label, min_precision, max_precision FROM series ORDER BY place"))
        series[row[0].as<int>()].emplace(
            static_cast<ESeriesId>(row[1].as<std::uint32_t>()),
            static_cast<EAggrType>(row[2].as<std::uint32_t>()), SqlRowForm::ReadText(row[3]),
            static_cast<EPrecision>(row[4].as<int>()), static_cast<EPrecision>(row[5].as<int>()));
    return series;
}

std::map<int, std::vector<std::wstring>> ReadGroups(pqxx::transaction_base& a_transaction)
{
    std::map<int, std::vector<std::wstring>> groups;
    for (const pqxx::row& row : a_transaction.exec("SELECT instrument, name FROM groups ORDER BY place"))
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

struct Shape {
    int number = 0;
    IntervalAndMultiplicity interval;
    std::uint64_t rowCount = 0;
};

std::optional<Shape> FindShape(pqxx::transaction_base& a_transaction, const std::string& a_isin)
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

// Appends a page of rows.
void AppendPage(pqxx::transaction_base& a_transaction, int a_number, std::uint64_t a_first,
                std::uint64_t a_last, std::vector<NDateTime>& a_times, DataSeriesSet::Columns& a_columns)
{
    const pqxx::result page = a_transaction.exec_params(
        std::string("SELECT ") + SqlRowForm::S_timeColumns +
            ", values, position FROM rows WHERE instrument = $1 AND position >= $2 AND position < $3"
            " ORDER BY position",
        a_number, ToPosition(a_first), ToPosition(a_last));
    std::vector<double> values;
    std::uint64_t expected = a_first;
    for (const pqxx::row& row : page) {
        SqlRowForm::ReadNumbers(row[4].c_str(), values);
        if (row[5].as<std::uint64_t>() != expected++ || values.size() != a_columns.size())
            throw std::runtime_error("Uszkodzone wiersze w bazie: "_cp1250 + std::to_string(a_first));
        a_times.push_back(SqlRowForm::ReadTime(row, 0));
        for (std::size_t column = 0; column < values.size(); ++column)
            a_columns[column].second.push_back(values[column]);
    }
}

// The first row whose day compares so with a_day; the count of rows where there is none.
std::uint64_t FindDay(pqxx::transaction_base& a_transaction, const Shape& a_shape, const std::string& a_day,
                      const char* a_comparison)
{
    const pqxx::result found = a_transaction.exec_params(
        std::string("SELECT position FROM rows WHERE instrument = $1 AND day ") + a_comparison +
            " $2::date AND position < $3 ORDER BY day, position LIMIT 1",
        a_shape.number, a_day, ToPosition(a_shape.rowCount));
    return found.empty() ? a_shape.rowCount : ToNumber(found[0][0].as<std::int64_t>());
}

} // namespace

SqlStore::SqlStore(SqlAddress a_address) : SqlStore(std::move(a_address), Pauses()) {}

SqlStore::SqlStore(SqlAddress a_address, Pauses a_pauses)
    : m_address(std::move(a_address)), m_pauses(a_pauses)
{}

SqlStore::~SqlStore()
{
    SqlStore::Close();
}

void SqlStore::Open(IMarketStoreListener& a_listener)
{
    const std::lock_guard lock(m_mutex);
    m_session = std::make_shared<SqlSession>(m_address, m_pauses, a_listener);
}

void SqlStore::Close()
{
    std::shared_ptr<SqlSession> session;
    {
        const std::lock_guard lock(m_mutex);
        session.swap(m_session);
    }
    if (session)
        session->Close(); // a read that is on its way holds the object a little longer
}

void SqlStore::Read(const std::function<void(pqxx::transaction_base&)>& a_reading)
{
    std::shared_ptr<SqlSession> session;
    {
        const std::lock_guard lock(m_mutex);
        session = m_session;
    }
    if (!session)
        throw std::runtime_error("Baza nie jest otwarta"_cp1250);
    session->Read(a_reading);
}

std::vector<StoreInstrument> SqlStore::ReadInstruments()
{
    std::vector<StoreInstrument> instruments;
    if (m_address.IsEmpty())
        return instruments;
    Read([&](pqxx::transaction_base& a_transaction) {
        const pqxx::result found = a_transaction.exec(
            "SELECT number, isin, short_name, long_name, market, interval_kind, multiplicity, live,"
            " to_char(earliest.day, 'YYYY-MM-DD'), to_char(latest.day, 'YYYY-MM-DD') FROM instruments"
            " LEFT JOIN rows earliest ON earliest.instrument = number AND earliest.position = 0"
            " LEFT JOIN rows latest ON latest.instrument = number AND latest.position = row_count - 1");
        const auto series = ReadSeries(a_transaction);
        const auto groups = ReadGroups(a_transaction);
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
    });
    return instruments;
}

HistoryOperations SqlStore::ReadOperations(const std::string& a_isin)
{
    Settings list;
    Read([&](pqxx::transaction_base& a_transaction) {
        const pqxx::result found = a_transaction.exec_params(
            "SELECT operations_version, id, kind, day_number, counter, factor FROM instruments"
            " LEFT JOIN operations ON instrument = number WHERE isin = $1 ORDER BY place",
            SqlRowForm::WriteBytes(a_isin));
        for (const pqxx::row& row : found) {
            list[HistoryOperations::XML_VERSION] = row[0].as<int>();
            if (row[1].is_null())
                continue;
            Settings& operation = list[HistoryOperations::XML_OPERATIONS].AddUnnamed();
            operation[SingleHistoryOperation::XML_ID] = row[1].as<int>();
            operation[SingleHistoryOperation::XML_TYPE] = row[2].as<int>();
            Settings& date = operation[SingleHistoryOperation::XML_DATE];
            date[NDateTime::XML_DATETIME] = SqlRowForm::ReadNumber(row[3].c_str());
            date[NDateTime::XML_MILISECOND] = row[4].as<int>();
            operation[SingleHistoryOperation::XML_CORRECTION_FACTOR] = SqlRowForm::ReadNumber(row[5].c_str());
        }
    });
    return HistoryOperations(list);
}

std::uint64_t SqlStore::GetRowCount(const std::string& a_isin)
{
    std::uint64_t count = 0;
    Read([&](pqxx::transaction_base& a_transaction) {
        if (const auto shape = FindShape(a_transaction, a_isin))
            count = shape->rowCount;
    });
    return count;
}

std::uint64_t SqlStore::FindRow(const std::string& a_isin, const NDateTime& a_time)
{
    std::uint64_t row = 0;
    Read([&](pqxx::transaction_base& a_transaction) {
        const auto shape = FindShape(a_transaction, a_isin);
        const auto time = SqlRowForm::WriteTime(a_time);
        if (!shape)
            return;
        // A time that no row can have lies before all of them, such as the zero time, or behind, such as the year 9999.
        if (!time) {
            row = a_time.ToDouble() > 0.0 ? shape->rowCount : 0;
            return;
        }
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
        row = first;
    });
    return row;
}

History SqlStore::ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last)
{
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns;
    IntervalAndMultiplicity interval(EIntervalTick, 1);
    Read([&](pqxx::transaction_base& a_transaction) {
        const auto shape = FindShape(a_transaction, a_isin);
        if (!shape)
            return;
        interval = shape->interval;
        for (const pqxx::row& row : a_transaction.exec_params(
                 "SELECT id FROM series WHERE instrument = $1 ORDER BY place", shape->number))
            columns.emplace_back(static_cast<ESeriesId>(row[0].as<std::uint32_t>()), std::vector<double>());
        const std::uint64_t last = std::min(a_last, shape->rowCount);
        for (std::uint64_t first = a_first; first < last; first += S_rowsAPage)
            AppendPage(a_transaction, shape->number, first, std::min(first + S_rowsAPage, last), times,
                       columns);
        if (a_first < last && times.size() != last - a_first)
            throw std::runtime_error("W bazie brakuje wierszy instrumentu "_cp1250 + a_isin);
    });
    return {interval.GetInterval(), interval.GetMultiplicity(), std::move(times), std::move(columns)};
}

std::optional<Offers> SqlStore::ReadOffers(const std::string& a_isin)
{
    std::optional<Offers> offers;
    Read([&](pqxx::transaction_base& a_transaction) {
        const pqxx::result found = a_transaction.exec_params(
            std::string("SELECT ") + SqlRowForm::S_timeColumns +
                ", series, values FROM books JOIN instruments ON number = instrument WHERE isin = $1",
            SqlRowForm::WriteBytes(a_isin));
        if (found.empty())
            return;
        offers.emplace();
        if (!found[0][0].is_null())
            offers->SetTime(SqlRowForm::ReadTime(found[0], 0));
        std::vector<double> ids;
        std::vector<double> values;
        SqlRowForm::ReadNumbers(found[0][4].c_str(), ids);
        SqlRowForm::ReadNumbers(found[0][5].c_str(), values);
        for (std::size_t place = 0; place < std::min(ids.size(), values.size()); ++place) {
            if (ids[place] >= 0 && ids[place] <= static_cast<double>(AskOrders5))
                offers->SetData(static_cast<ESeriesId>(ids[place]), values[place]);
        }
    });
    return offers;
}
