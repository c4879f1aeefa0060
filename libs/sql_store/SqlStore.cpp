#include "sql_store/SqlStore.h"

#include "platform/CodePage.h"
#include "provider_kit/DamagedData.h"
#include "settings/Settings.h"
#include "sql_store/SqlQueries.h"
#include "sql_store/SqlRowForm.h"
#include "sql_store/SqlSession.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

// A page of rows: the answer of the server is held as text, so a long history is asked for in pieces.
constexpr std::uint64_t S_rowsAPage = 50'000;

// Appends a page of rows.
void AppendPage(pqxx::transaction_base& a_transaction, int a_number, std::uint64_t a_first,
                std::uint64_t a_last, std::vector<NDateTime>& a_times, DataSeriesSet::Columns& a_columns)
{
    std::uint64_t next = a_first;
    std::string place =
        "wiersze od "_cp1250 + std::to_string(a_first) + " do "_cp1250 + std::to_string(a_last - 1);
    try {
        const pqxx::result page = a_transaction.exec_params(
            std::string("SELECT ") + SqlRowForm::S_timeColumns +
                ", values, position FROM rows WHERE instrument = $1 AND position >= $2 AND position < $3"
                " ORDER BY position",
            a_number, SqlQueries::ToPosition(a_first), SqlQueries::ToPosition(a_last));
        std::vector<double> values;
        for (const pqxx::row& row : page) {
            place = "wiersz "_cp1250 + std::to_string(next);
            if (row[5].as<std::uint64_t>() != next)
                return; // the caller asks why it isn't there
            SqlRowForm::ReadNumbers(row[4].c_str(), values);
            if (values.size() != a_columns.size())
                throw DamagedData("wartości jest "_cp1250 + std::to_string(values.size()) +
                                  ", a serii "_cp1250 + std::to_string(a_columns.size()));
            const NDateTime time = SqlRowForm::ReadTime(row, 0);
            if (!a_times.empty() && !(a_times.back() < time))
                throw DamagedData("czas nie jest późniejszy od poprzedniego"_cp1250);
            a_times.push_back(time);
            for (std::size_t column = 0; column < values.size(); ++column)
                a_columns[column].second.push_back(values[column]);
            ++next;
        }
    } catch (...) {
        if (!SqlRowForm::IsDamageInFlight())
            throw;
        throw DamagedData(place + ": " + SqlRowForm::ReasonInFlight());
    }
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

template<class Reading>
auto SqlStore::Read(const Reading& a_reading)
{
    std::shared_ptr<SqlSession> session;
    {
        const std::lock_guard lock(m_mutex);
        session = m_session;
    }
    if (!session)
        throw std::runtime_error("Baza nie jest otwarta"_cp1250);
    std::optional<std::invoke_result_t<Reading, pqxx::transaction_base&>> answer;
    session->Read([&](pqxx::transaction_base& a_transaction) { answer = a_reading(a_transaction); });
    return *std::move(answer);
}

template<class Reading>
auto SqlStore::ReadOf(const std::string& a_isin, const Reading& a_reading)
{
    try {
        return Read(a_reading);
    } catch (const DamagedData& damage) {
        throw DamagedData("Uszkodzone dane waloru "_cp1250 + a_isin + " w bazie: "_cp1250 + damage.what());
    }
}

std::vector<StoreInstrument> SqlStore::ReadInstruments()
{
    if (m_address.IsEmpty())
        return {};
    return Read(
        [](pqxx::transaction_base& a_transaction) { return SqlQueries::ReadInstruments(a_transaction); });
}

HistoryOperations SqlStore::ReadOperations(const std::string& a_isin)
{
    return ReadOf(a_isin, [&](pqxx::transaction_base& a_transaction) {
        Settings list;
        const pqxx::result found = a_transaction.exec_params(
            "SELECT operations_version, id, kind, day_number, counter, factor FROM instruments"
            " LEFT JOIN operations ON instrument = number WHERE isin = $1 ORDER BY place",
            SqlRowForm::WriteName(a_isin));
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
        return HistoryOperations(list);
    });
}

std::uint64_t SqlStore::GetRowCount(const std::string& a_isin)
{
    const auto shape = ReadOf(a_isin, [&](pqxx::transaction_base& a_transaction) {
        return SqlQueries::FindShape(a_transaction, a_isin);
    });
    return shape ? shape->rowCount : 0;
}

std::uint64_t SqlStore::FindRow(const std::string& a_isin, const NDateTime& a_time)
{
    return ReadOf(a_isin, [&](pqxx::transaction_base& a_transaction) {
        return SqlQueries::FindRow(a_transaction, a_isin, a_time);
    });
}

History SqlStore::ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last)
{
    return ReadOf(a_isin, [&](pqxx::transaction_base& a_transaction) {
        const auto shape = SqlQueries::FindShape(a_transaction, a_isin);
        if (!shape)
            return History(EIntervalTick, 1);
        std::vector<NDateTime> times;
        DataSeriesSet::Columns columns;
        for (const ESeriesId series : SqlQueries::ReadSeriesIds(a_transaction, shape->number))
            columns.emplace_back(series, std::vector<double>());
        const std::uint64_t last = std::min(a_last, shape->rowCount);
        for (std::uint64_t first = a_first; first < last && times.size() == first - a_first;
             first += S_rowsAPage)
            AppendPage(a_transaction, shape->number, first, std::min(first + S_rowsAPage, last), times,
                       columns);
        if (a_first < last && times.size() != last - a_first)
            SqlQueries::CheckMissing(a_transaction, a_isin, *shape, a_first + times.size());
        return History(shape->interval.GetInterval(), shape->interval.GetMultiplicity(), std::move(times),
                       std::move(columns));
    });
}

std::optional<Offers> SqlStore::ReadOffers(const std::string& a_isin)
{
    return ReadOf(a_isin, [&](pqxx::transaction_base& a_transaction) {
        std::optional<Offers> offers;
        const pqxx::result found = a_transaction.exec_params(
            std::string("SELECT ") + SqlRowForm::S_timeColumns +
                ", series, values FROM books JOIN instruments ON number = instrument WHERE isin = $1",
            SqlRowForm::WriteName(a_isin));
        if (found.empty())
            return offers;
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
        return offers;
    });
}
