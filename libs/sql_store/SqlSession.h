#pragma once

#include "provider_kit/IMarketStore.h"
#include "sql_store/SqlConnection.h"
#include "sql_store/SqlPauses.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

/// What SqlStore holds between Open and Close: the thread that listens, and the connections for reading.
class SqlSession {
public:
    using Reading = std::function<void(pqxx::transaction_base& a_transaction)>;

    /// Begins to connect at once.
    SqlSession(SqlAddress a_address, SqlPauses a_pauses, IMarketStoreListener& a_listener);
    /// Ends all, as Close.
    ~SqlSession();

    /// Ends the thread and breaks off what runs. The listener isn't called after that.
    void Close();
    /// Runs a_reading on a connection of its own, any thread, four at once. Raises std::runtime_error (CP1250) where
    /// there is no connection or the reading fails; the listening thread then connects anew. Values that can't be read
    /// raise DamagedData and leave the connection alone.
    void Read(const Reading& a_reading);

    SqlSession(const SqlSession&) = delete;
    SqlSession& operator=(const SqlSession&) = delete;

private:
    class Receiver;

    // The listening thread.
    void Run();
    void Listen();
    void WaitForServer(int a_socket) const;
    void TellBroken(const std::string& a_reason);
    void Pause();
    std::string FindIsin(SqlConnection& a_connection, const std::string& a_number);

    // Connections for reading.
    std::unique_ptr<SqlConnection> TakeConnection(std::uint64_t& a_era);
    void GiveBack(std::unique_ptr<SqlConnection> a_connection, std::uint64_t a_era);
    void SetConnected(bool a_connected);
    void BreakOff();

    const SqlAddress m_address;
    const SqlPauses m_pauses;
    IMarketStoreListener& m_listener;
    const std::shared_ptr<SqlInterrupt> m_interrupt;
    kalvento::internal::WakeUp m_breakOff; // a reading failed

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_connected = false;
    bool m_closing = false;
    std::uint64_t m_era = 0; // counts breaks: a connection made before one isn't used after it
    std::size_t m_inUse = 0;
    std::vector<std::unique_ptr<SqlConnection>> m_idle;

    // Of the listening thread alone.
    bool m_brokenTold = false;
    std::chrono::milliseconds m_pause;
    std::int64_t m_changes =
        -1; // of the database's instruments when last announced; -1 before the first connection
    std::map<std::string, std::string> m_isins; // by the instrument's number

    std::thread m_thread; // last: all else is there when it starts
};
