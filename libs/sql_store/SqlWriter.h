#pragma once

#include "history_operations/HistoryOperations.h"
#include "provider_kit/IMarketStore.h"
#include "series/History.h"
#include "series/Offers.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

/// What was asked for contradicts what the database holds; asking again won't help. Text in CP1250.
class SqlConflict : public std::runtime_error {
public:
    explicit SqlConflict(const std::string& a_text, std::optional<std::uint64_t> a_otherRow = std::nullopt)
        : std::runtime_error(a_text), m_otherRow(a_otherRow)
    {}
    /// Number of the row that is there and differs from the one given; empty for all other conflicts.
    std::optional<std::uint64_t> GetOtherRow() const { return m_otherRow; }

private:
    std::optional<std::uint64_t> m_otherRow;
};

/// Puts instruments and rows into the database that SqlStore reads. Every operation is one transaction, seen by others
/// as a whole or not at all, and safe on the disk when it returns. Connects at the first need and again after a break.
///
/// A std::exception other than SqlConflict: the server could not be reached or failed. Whether the change was made is
/// then not known, for the answer may be what got lost. Every operation can be repeated with the same arguments, until
/// it succeeds, with the effect of having done it once. Any number of writers may work at once; each belongs to one
/// thread.
class SqlWriter {
public:
    /// a_connection: as SqlAddress takes it; raises std::invalid_argument for another text, or an empty one. Creates
    /// the tables at the first need.
    explicit SqlWriter(const std::string& a_connection);
    ~SqlWriter();

    /// Adds the instrument, or changes names, market, groups and `live` of one that is there. firstDay and lastDay are
    /// ignored. Conflict: other series or another interval than it has; a description that no rows can have.
    void CreateInstrument(const StoreInstrument& a_instrument);
    /// Removes it with its rows. False where there is none.
    bool RemoveInstrument(const std::string& a_isin);

    struct Appended {
        std::uint64_t added; ///< Rows that were not there.
        std::uint64_t count; ///< Rows that the instrument has now.
    };
    /// Numbers the rows from a_expectedPosition on. Rows of these numbers that
    /// are there already are skipped where they are equal, bit for bit. Conflict: a row that is there differs, so
    /// somebody else wrote; rows before a_expectedPosition are missing; times don't rise strictly; other series or
    /// another interval; no such instrument. Nothing is changed then.
    Appended AppendRows(const std::string& a_isin, std::uint64_t a_expectedPosition, const History& a_rows);
    /// The instrument, as SqlStore reads it; empty for none.
    std::optional<StoreInstrument> FindInstrument(const std::string& a_isin);
    /// Number of the first row whose time isn't before a_time; how many there are where there is none.
    std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time);
    /// How many rows there are; 0 for no such instrument.
    std::uint64_t GetRowCount(const std::string& a_isin);

    /// Replaces those that are there. Conflict: no such instrument, or a date that isn't one.
    void SetOperations(const std::string& a_isin, const HistoryOperations& a_operations);
    /// The book as it is now: what is set in a_offers, whether changed or not, and its time. Conflict: no such
    /// instrument, or a time that isn't valid.
    void SetOffers(const std::string& a_isin, const Offers& a_offers);

    SqlWriter(const SqlWriter&) = delete;
    SqlWriter& operator=(const SqlWriter&) = delete;

private:
    class Session;
    std::unique_ptr<Session> m_session;
};
