#pragma once

#include "provider_kit/IMarketStore.h"
#include "sql_store/SqlAddress.h"
#include "sql_store/SqlPauses.h"

#include <memory>
#include <mutex>
#include <string>

class SqlSession;

/// Instruments and rows of a PostgreSQL database, which any number of terminals and writers (SqlWriter) share.
///
/// One thread holds the connection on which the database announces new rows; it connects again after a break, with
/// pauses that grow. Readers share a few further connections, made as needed. A read that fails makes that thread break
/// off and connect anew, so that Restored follows every failure sooner or later. Values that can't be read are no such
/// failure: they raise DamagedData, and an instrument is left out of the list, with a line in the log.
class SqlStore : public IMarketStore {
public:
    using Pauses = SqlPauses;

    /// An empty address gives a store without instruments that never connects and tells the listener so. a_pauses:
    /// between two attempts to connect; they double.
    explicit SqlStore(SqlAddress a_address);
    SqlStore(SqlAddress a_address, Pauses a_pauses);
    ~SqlStore() override;

    void Open(IMarketStoreListener& a_listener) override;
    /// Doesn't wait for the server: statements that run are broken off and raise.
    void Close() override;

    std::vector<StoreInstrument> ReadInstruments() override;
    HistoryOperations ReadOperations(const std::string& a_isin) override;
    std::uint64_t GetRowCount(const std::string& a_isin) override;
    std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time) override;
    History ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) override;
    std::optional<Offers> ReadOffers(const std::string& a_isin) override;

private:
    // What a_reading(transaction) answers.
    template<class Reading>
    auto Read(const Reading& a_reading);
    // The same; DamagedData names the instrument.
    template<class Reading>
    auto ReadOf(const std::string& a_isin, const Reading& a_reading);

    const SqlAddress m_address;
    const Pauses m_pauses;
    std::mutex m_mutex;
    std::shared_ptr<SqlSession> m_session; // between Open and Close
};
