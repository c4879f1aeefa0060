#pragma once

#include "provider_kit/IMarketStore.h"

#include <pqxx/pqxx>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What SqlStore and SqlWriter both ask the database. Raises pqxx::pqxx_exception, and DamagedData for answers that our
/// code can't have put there.
namespace SqlQueries {

/// What reading rows of an instrument needs.
struct Shape {
    int number = 0;
    IntervalAndMultiplicity interval;
    std::uint64_t rowCount = 0;
};

/// Empty for no such instrument.
std::optional<Shape> FindShape(pqxx::transaction_base& a_transaction, const std::string& a_isin);
/// Those of all instruments, where one that can't be read is left out with a line in the log; or of one, if it is
/// there.
std::vector<StoreInstrument> ReadInstruments(pqxx::transaction_base& a_transaction,
                                             const std::optional<std::string>& a_isin = std::nullopt);
/// As IMarketStore::FindRow.
std::uint64_t FindRow(pqxx::transaction_base& a_transaction, const std::string& a_isin,
                      const NDateTime& a_time);
/// Of the instrument of that number, in their order.
std::vector<ESeriesId> ReadSeriesIds(pqxx::transaction_base& a_transaction, int a_number);
/// A row that was counted isn't there: raises DamagedData, unless the instrument has gone meanwhile.
void CheckMissing(pqxx::transaction_base& a_transaction, const std::string& a_isin, const Shape& a_shape,
                  std::uint64_t a_row);
/// Positions beyond what the database can hold belong to no row.
std::int64_t ToPosition(std::uint64_t a_position);

} // namespace SqlQueries
