#pragma once

#include "sql_store/SqlAddress.h"
#include "sql_store/SqlInterrupt.h"

#include <pqxx/pqxx>

#include <memory>

/// One connection to the database, with the settings that all our statements rely on. Its connecting and its statements
/// end when the interrupt comes. Once broken it stays broken: libpqxx would connect again by itself, and whoever
/// listens on it would never learn that notifications are missing. One thread at a time.
class SqlConnection : public pqxx::connection_base {
public:
    enum EUse : std::uint32_t {
        EReading, ///< Statements of half a minute at most.
        EWriting  ///< Of ten minutes, for bulk loads; a commit is on the disk when it returns.
    };

    /// Connects. Raises pqxx::broken_connection (UTF-8) where that fails, takes too long or is interrupted.
    SqlConnection(const SqlAddress& a_address, std::shared_ptr<SqlInterrupt> a_interrupt, EUse a_use);
    ~SqlConnection() noexcept;

private:
    // How libpqxx is to connect: step by step, looking at the interrupt in between.
    class Policy : public pqxx::connectionpolicy {
    public:
        Policy(const SqlAddress& a_address, std::shared_ptr<SqlInterrupt> a_interrupt);

        handle do_startconnect(handle a_connection) override;
        handle do_completeconnect(handle a_connection) override { return a_connection; }
        handle do_dropconnect(handle a_connection) noexcept override { return a_connection; }
        handle do_disconnect(handle a_connection) noexcept override;
        bool is_ready(handle a_connection) const noexcept override { return a_connection != nullptr; }

    private:
        void Connect(handle a_connection) const;

        const std::chrono::seconds m_patience;
        const std::shared_ptr<SqlInterrupt> m_interrupt;
        int m_socket = -1;
        bool m_used = false;
    };

    void SetUpSession(EUse a_use);

    Policy m_policy;
};
