#include "sql_store/SqlWriter.h"

#include "platform/CodePage.h"
#include "sql_store/SqlConnection.h"
#include "sql_store/SqlQueries.h"
#include "sql_store/SqlRowForm.h"
#include "sql_store/SqlSchema.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

namespace {

using kalvento::internal::NDateTimeWords;

struct Target {
    int number = 0;
    std::uint64_t rowCount = 0;
    IntervalAndMultiplicity interval;
};

bool SameBits(double a_left, double a_right)
{
    // The database knows one NaN.
    return std::bit_cast<std::uint64_t>(a_left) == std::bit_cast<std::uint64_t>(a_right) ||
           (std::isnan(a_left) && std::isnan(a_right));
}

bool SameBits(const NDateTime& a_left, const NDateTime& a_right)
{
    return SameBits(a_left.ToDouble(), a_right.ToDouble()) &&
           NDateTimeWords::Calendar(a_left) == NDateTimeWords::Calendar(a_right) &&
           NDateTimeWords::Clock(a_left) == NDateTimeWords::Clock(a_right);
}

[[noreturn]] void RaiseNoInstrument(const std::string& a_isin)
{
    throw SqlConflict("W bazie nie ma instrumentu "_cp1250 + a_isin);
}

// Locks the instrument until the end of the transaction: writers of one instrument follow one another.
Target LockInstrument(pqxx::transaction_base& a_transaction, const std::string& a_isin)
{
    const pqxx::result found = a_transaction.exec_params(
        "SELECT number, row_count, interval_kind, multiplicity FROM instruments WHERE isin = $1 FOR UPDATE",
        SqlRowForm::WriteName(a_isin));
    if (found.empty())
        RaiseNoInstrument(a_isin);
    return {found[0][0].as<int>(), found[0][1].as<std::uint64_t>(),
            IntervalAndMultiplicity(static_cast<EInterval>(found[0][2].as<std::uint32_t>()),
                                    found[0][3].as<std::uint32_t>())};
}

void TellInstrumentsChanged(pqxx::transaction_base& a_transaction)
{
    a_transaction.exec("UPDATE state SET changes = changes + 1");
    a_transaction.exec_params("SELECT pg_notify($1, '')", SqlSchema::S_channelInstruments);
}

void TellRowsAdded(pqxx::transaction_base& a_transaction, int a_number)
{
    a_transaction.exec_params("SELECT pg_notify($1, $2)", SqlSchema::S_channelRows, std::to_string(a_number));
}

void CheckShape(const StoreInstrument& a_instrument)
{
    if (a_instrument.isin.empty())
        throw SqlConflict("Instrument bez oznaczenia ISIN"_cp1250);
    if (a_instrument.series.empty() || a_instrument.series.contains(DSProp(Price)) == false ||
        !History(a_instrument.series, a_instrument.interval.GetInterval(),
                 a_instrument.interval.GetMultiplicity())
             .IsValid())
        throw SqlConflict(
            "Instrument "_cp1250 + a_instrument.isin +
            ": serie nie pasują do interwału; potrzebna jest cena, a świecom jej trzy serie"_cp1250);
    if (a_instrument.live && !a_instrument.interval.IsSingleTick())
        throw SqlConflict("Instrument "_cp1250 + a_instrument.isin +
                          ": na bieżąco można dopisywać tylko pojedyncze transakcje"_cp1250);
}

void CheckRows(const std::string& a_isin, const History& a_rows, const std::vector<ESeriesId>& a_series,
               const Target& a_target)
{
    if (!std::ranges::equal(a_rows, a_series, {}, &History::Column::first) ||
        !a_rows.GetIntervalData().Equals(a_target.interval))
        throw SqlConflict("Instrument "_cp1250 + a_isin + ": wiersze o innych seriach lub interwale"_cp1250);
    for (const auto& [id, column] : a_rows) {
        if (column.size() != a_rows.GetRecordsCount())
            throw SqlConflict("Instrument "_cp1250 + a_isin + ": kolumny różnej długości"_cp1250);
    }
}

std::vector<double> RowValues(const History& a_rows, std::size_t a_row)
{
    std::vector<double> values;
    for (const auto& [id, column] : a_rows)
        values.push_back(column[a_row]);
    return values;
}

// Skips what the database already has; gives the first row that is new.
std::size_t CheckRowsThere(pqxx::transaction_base& a_transaction, const Target& a_target,
                           std::uint64_t a_expectedPosition, const History& a_rows)
{
    const std::size_t there = static_cast<std::size_t>(
        std::min<std::uint64_t>(a_target.rowCount - a_expectedPosition, a_rows.GetRecordsCount()));
    const pqxx::result found = a_transaction.exec_params(
        std::string("SELECT ") + SqlRowForm::S_timeColumns +
            ", values FROM rows WHERE instrument = $1 AND position >= $2 AND position < $3 ORDER BY position",
        a_target.number, a_expectedPosition, a_expectedPosition + there);
    std::vector<double> values;
    for (std::size_t row = 0; row < there; ++row) {
        const auto place = static_cast<pqxx::result::size_type>(row);
        bool same =
            place < found.size() && SameBits(SqlRowForm::ReadTime(found[place], 0), a_rows.TimeSeries()[row]);
        if (same) {
            SqlRowForm::ReadNumbers(found[place][4].c_str(), values);
            const std::vector<double> given = RowValues(a_rows, row);
            same = std::equal(values.begin(), values.end(), given.begin(), given.end(),
                              [](double a_left, double a_right) { return SameBits(a_left, a_right); });
        }
        if (!same)
            throw SqlConflict("W bazie jest już inny wiersz o numerze "_cp1250 +
                                  std::to_string(a_expectedPosition + row),
                              a_expectedPosition + row);
    }
    return there;
}

void CheckOrder(pqxx::transaction_base& a_transaction, const Target& a_target, const History& a_rows,
                std::size_t a_first)
{
    std::optional<NDateTime> last;
    if (a_target.rowCount > 0) {
        const pqxx::row row =
            a_transaction.exec_params1(std::string("SELECT ") + SqlRowForm::S_timeColumns +
                                           " FROM rows WHERE instrument = $1 AND position = $2",
                                       a_target.number, a_target.rowCount - 1);
        last = SqlRowForm::ReadTime(row, 0);
    }
    for (std::size_t row = a_first; row < a_rows.GetRecordsCount(); ++row) {
        const NDateTime& time = a_rows.TimeSeries()[row];
        if (last && !(*last < time))
            throw SqlConflict("Czas wiersza "_cp1250 + std::to_string(row) +
                              " nie jest późniejszy od poprzedniego"_cp1250);
        last = time;
    }
}

void CopyRows(pqxx::transaction_base& a_transaction, const Target& a_target, const History& a_rows,
              std::size_t a_first)
{
    const std::string number = std::to_string(a_target.number);
    pqxx::stream_to stream(
        a_transaction, "rows",
        std::array{"instrument", "position", "day", "second", "counter", "day_number", "values"});
    for (std::size_t row = a_first; row < a_rows.GetRecordsCount(); ++row) {
        const auto time = SqlRowForm::WriteTime(a_rows.TimeSeries()[row]);
        if (!time)
            throw SqlConflict("Zły czas wiersza "_cp1250 + std::to_string(row));
        stream << std::array{number,
                             std::to_string(a_target.rowCount + row - a_first),
                             time->day,
                             time->second,
                             time->counter,
                             time->dayNumber,
                             SqlRowForm::WriteNumbers(RowValues(a_rows, row))};
    }
    stream.complete();
}

void WriteSeries(pqxx::transaction_base& a_transaction, int a_number, const std::set<DSProp>& a_series)
{
    int place = 0;
    for (const DSProp& series : a_series)
        a_transaction.exec_params(
            "INSERT INTO series VALUES ($1, $2, $3, $4, $5, $6, $7)", a_number, place++,
            static_cast<std::uint32_t>(series.GetSeriesID()),
            static_cast<std::uint32_t>(series.GetAggrType()), SqlRowForm::WriteText(series.GetLabel()),
            static_cast<int>(series.GetMinPrecision()), static_cast<int>(series.GetMaxPrecision()));
}

void WriteGroups(pqxx::transaction_base& a_transaction, int a_number,
                 const std::vector<std::wstring>& a_groups)
{
    int place = 0;
    for (const std::wstring& group : a_groups)
        a_transaction.exec_params("INSERT INTO groups VALUES ($1, $2, $3)", a_number, place++,
                                  SqlRowForm::WriteText(group));
}

} // namespace

/// The connection and its renewal.
class SqlWriter::Session {
public:
    explicit Session(const std::string& a_connection) : m_address(a_connection)
    {
        if (m_address.IsEmpty())
            throw std::invalid_argument("Nie wskazano bazy"_cp1250);
    }

    /// Runs a_change(transaction), commits and gives what it answered.
    template<class Change>
    auto Transact(Change a_change)
    {
        try {
            if (!m_connection) {
                m_connection.emplace(m_address, std::make_shared<SqlInterrupt>(), SqlConnection::EWriting);
                SqlSchema::Ensure(*m_connection);
            }
            pqxx::work transaction(*m_connection);
            if constexpr (std::is_void_v<std::invoke_result_t<Change, pqxx::work&>>) {
                a_change(transaction);
                transaction.commit();
            } else {
                auto answer = a_change(transaction);
                transaction.commit();
                return answer;
            }
        } catch (const SqlConflict&) {
            throw;
        } catch (const pqxx::pqxx_exception& failure) {
            // Whatever state the connection is in, a fresh one is in a known one.
            m_connection.reset();
            throw std::runtime_error(SqlRowForm::ToLogText(failure.base().what()));
        } catch (...) {
            m_connection.reset();
            throw;
        }
    }

private:
    const SqlAddress m_address;
    std::optional<SqlConnection> m_connection;
};

SqlWriter::SqlWriter(const std::string& a_connection) : m_session(std::make_unique<Session>(a_connection)) {}

SqlWriter::~SqlWriter() = default;

void SqlWriter::CreateInstrument(const StoreInstrument& a_instrument)
{
    CheckShape(a_instrument);
    m_session->Transact([&](pqxx::work& a_transaction) {
        const auto isin = SqlRowForm::WriteName(a_instrument.isin);
        const pqxx::result added = a_transaction.exec_params(
            "INSERT INTO instruments (isin, short_name, long_name, market, interval_kind, multiplicity, live)"
            " VALUES ($1, '', '', '', $2, $3, false) ON CONFLICT DO NOTHING RETURNING number",
            isin, static_cast<std::uint32_t>(a_instrument.interval.GetInterval()),
            a_instrument.interval.GetMultiplicity());
        const Target target = LockInstrument(a_transaction, a_instrument.isin);
        if (!added.empty())
            WriteSeries(a_transaction, target.number, a_instrument.series);
        const auto there = SqlQueries::ReadSeriesIds(a_transaction, target.number);
        if (!target.interval.Equals(a_instrument.interval) ||
            !std::ranges::equal(there, a_instrument.series, {}, {}, &DSProp::GetSeriesID))
            throw SqlConflict("Instrument "_cp1250 + a_instrument.isin +
                              " jest już w bazie z innymi seriami lub interwałem"_cp1250);
        a_transaction.exec_params(
            "UPDATE instruments SET short_name = $2, long_name = $3, market = $4, live = $5 WHERE number = $1",
            target.number, SqlRowForm::WriteName(a_instrument.shortName),
            SqlRowForm::WriteName(a_instrument.longName), SqlRowForm::WriteName(a_instrument.market),
            a_instrument.live);
        a_transaction.exec_params("DELETE FROM groups WHERE instrument = $1", target.number);
        WriteGroups(a_transaction, target.number, a_instrument.groups);
        TellInstrumentsChanged(a_transaction);
    });
}

bool SqlWriter::RemoveInstrument(const std::string& a_isin)
{
    return m_session->Transact([&](pqxx::work& a_transaction) {
        // The instrument first: it locks out those who append.
        const pqxx::result gone = a_transaction.exec_params(
            "DELETE FROM instruments WHERE isin = $1 RETURNING number", SqlRowForm::WriteName(a_isin));
        if (gone.empty())
            return false;
        a_transaction.exec_params("DELETE FROM rows WHERE instrument = $1", gone[0][0].as<int>());
        TellInstrumentsChanged(a_transaction);
        return true;
    });
}

SqlWriter::Appended SqlWriter::AppendRows(const std::string& a_isin, std::uint64_t a_expectedPosition,
                                          const History& a_rows)
{
    return m_session->Transact([&](pqxx::work& a_transaction) {
        // Numbers come from the count of rows under the instrument's lock, not from a sequence. A sequence is given out
        // before the commit: the writer of number 7 may commit before that of number 6, a reader would go on after 7,
        // and 6 would never be read; and a writer that fails would leave a gap for ever. Under the lock each commit
        // makes the next numbers visible, in order and without gaps.
        const Target target = LockInstrument(a_transaction, a_isin);
        if (a_expectedPosition > target.rowCount)
            throw SqlConflict("Brakuje wierszy od numeru "_cp1250 + std::to_string(target.rowCount));
        CheckRows(a_isin, a_rows, SqlQueries::ReadSeriesIds(a_transaction, target.number), target);
        const std::size_t first = CheckRowsThere(a_transaction, target, a_expectedPosition, a_rows);
        const std::size_t added = a_rows.GetRecordsCount() - first;
        const Appended result{added, target.rowCount + added};
        if (added == 0)
            return result;
        CheckOrder(a_transaction, target, a_rows, first);
        CopyRows(a_transaction, target, a_rows, first);
        a_transaction.exec_params("UPDATE instruments SET row_count = $2 WHERE number = $1", target.number,
                                  result.count);
        TellRowsAdded(a_transaction, target.number);
        return result;
    });
}

std::optional<StoreInstrument> SqlWriter::FindInstrument(const std::string& a_isin)
{
    auto found = m_session->Transact(
        [&](pqxx::work& a_transaction) { return SqlQueries::ReadInstruments(a_transaction, a_isin); });
    return found.empty() ? std::nullopt : std::optional(std::move(found.back()));
}

std::uint64_t SqlWriter::FindRow(const std::string& a_isin, const NDateTime& a_time)
{
    return m_session->Transact(
        [&](pqxx::work& a_transaction) { return SqlQueries::FindRow(a_transaction, a_isin, a_time); });
}

std::uint64_t SqlWriter::GetRowCount(const std::string& a_isin)
{
    const auto shape = m_session->Transact(
        [&](pqxx::work& a_transaction) { return SqlQueries::FindShape(a_transaction, a_isin); });
    return shape ? shape->rowCount : 0;
}

void SqlWriter::SetOperations(const std::string& a_isin, const HistoryOperations& a_operations)
{
    m_session->Transact([&](pqxx::work& a_transaction) {
        const int number = LockInstrument(a_transaction, a_isin).number;
        a_transaction.exec_params("UPDATE instruments SET operations_version = $2 WHERE number = $1", number,
                                  a_operations.Version());
        a_transaction.exec_params("DELETE FROM operations WHERE instrument = $1", number);
        int place = 0;
        for (const SingleHistoryOperation& operation : a_operations) {
            if (!operation.GetDate().IsValid())
                throw SqlConflict("Operacja bez daty, numer "_cp1250 + std::to_string(operation.GetId()));
            a_transaction.exec_params("INSERT INTO operations VALUES ($1, $2, $3, $4, $5, $6, $7)", number,
                                      place++, operation.GetId(), static_cast<int>(operation.GetType()),
                                      SqlRowForm::WriteNumber(operation.GetDate().ToDouble()),
                                      static_cast<int>(operation.GetDate().GetMilliSec()),
                                      SqlRowForm::WriteNumber(operation.GetStoredFactor()));
        }
        TellInstrumentsChanged(a_transaction);
    });
}

void SqlWriter::SetOffers(const std::string& a_isin, const Offers& a_offers)
{
    std::optional<SqlRowForm::TimeColumns> time;
    if (a_offers.TimeFieldIsSet()) {
        time = SqlRowForm::WriteTime(a_offers.GetTime().value);
        if (!time)
            throw SqlConflict("Zły czas arkusza ofert "_cp1250 + a_isin);
    }
    std::vector<double> ids;
    std::vector<double> values;
    for (const auto& [id, value] : a_offers) {
        if (!value.IsSet())
            continue;
        ids.push_back(static_cast<double>(id));
        values.push_back(value.value);
    }
    m_session->Transact([&](pqxx::work& a_transaction) {
        const int number = LockInstrument(a_transaction, a_isin).number;
        a_transaction.exec_params("DELETE FROM books WHERE instrument = $1", number);
        a_transaction.exec_params("INSERT INTO books (instrument, series, values) VALUES ($1, $2, $3)",
                                  number, SqlRowForm::WriteNumbers(ids), SqlRowForm::WriteNumbers(values));
        if (time)
            a_transaction.exec_params(
                "UPDATE books SET day = $2, second = $3, counter = $4, day_number = $5 WHERE instrument = $1",
                number, time->day, time->second, time->counter, time->dayNumber);
        TellRowsAdded(a_transaction, number);
    });
}
