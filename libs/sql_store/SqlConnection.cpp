#include "sql_store/SqlConnection.h"

#include "platform/Descriptors.h"

#include <libpq-fe.h>

#include <array>
#include <chrono>
#include <string>
#include <utility>

SqlConnection::Policy::Policy(const SqlAddress& a_address, std::shared_ptr<SqlInterrupt> a_interrupt)
    : pqxx::connectionpolicy(a_address.GetConnection()),
      m_patience(a_address.GetPatience()),
      m_interrupt(std::move(a_interrupt))
{}

pqxx::connectionpolicy::handle SqlConnection::Policy::do_startconnect(handle a_connection)
{
    if (a_connection != nullptr)
        return a_connection;
    if (m_used)
        throw pqxx::broken_connection("The connection is broken");
    m_used = true;

    handle connection = PQconnectStart(options().c_str());
    if (connection == nullptr)
        throw std::bad_alloc();
    try {
        Connect(connection);
    } catch (...) {
        PQfinish(connection);
        throw;
    }
    m_socket = PQsocket(connection);
    m_interrupt->Add(m_socket);
    return connection;
}

void SqlConnection::Policy::Connect(handle a_connection) const
{
    const auto deadline = std::chrono::steady_clock::now() + m_patience;
    // As documented at https://www.postgresql.org/docs/15/libpq-connect.html#LIBPQ-PQCONNECTSTARTPARAMS: before the
    // first call of PQconnectPoll one waits as if it had asked to write. The socket may be a different one at each
    // step.
    auto step = PQstatus(a_connection) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
    while (step != PGRES_POLLING_OK) {
        if (step == PGRES_POLLING_FAILED)
            throw pqxx::broken_connection(PQerrorMessage(a_connection));
        std::array<kalvento::internal::Descriptors::Awaited, 2> awaited = {
            {{PQsocket(a_connection), step != PGRES_POLLING_READING}, {m_interrupt->GetFd()}}};
        const bool isInTime = kalvento::internal::Descriptors::WaitForAny(awaited, deadline);
        if (m_interrupt->IsInterrupted())
            throw pqxx::broken_connection("Interrupted");
        if (!isInTime)
            throw pqxx::broken_connection("The server does not answer in time");
        step = PQconnectPoll(a_connection);
    }
}

pqxx::connectionpolicy::handle SqlConnection::Policy::do_disconnect(handle a_connection) noexcept
{
    if (a_connection != nullptr) {
        m_interrupt->Remove(m_socket);
        PQfinish(a_connection);
    }
    return nullptr;
}

SqlConnection::SqlConnection(const SqlAddress& a_address, std::shared_ptr<SqlInterrupt> a_interrupt,
                             EUse a_use)
    : pqxx::connection_base(m_policy), m_policy(a_address, std::move(a_interrupt))
{
    try {
        init();
        SetUpSession(a_use);
    } catch (...) {
        close();
        throw;
    }
}

SqlConnection::~SqlConnection() noexcept
{
    close();
}

void SqlConnection::SetUpSession(EUse a_use)
{
    // A database or a role may have settings of its own, on which neither the form of values nor our safety may depend.
    std::string settings =
        "SET search_path = kalvento; SET client_encoding = 'UTF8'; SET bytea_output = 'hex'; SET extra_float_digits = 1;"
        "SET default_transaction_isolation = 'read committed'; SET idle_in_transaction_session_timeout = '60s';";
    if (a_use == EWriting) {
        // Without synchronous commits a crashed server forgets rows that readers have seen, and gives their numbers
        // to others. Stricter settings, for replicas, stay.
        settings += "SET statement_timeout = '10min'; SET lock_timeout = '60s';"
                    "SELECT set_config('synchronous_commit', 'on', false)"
                    " WHERE current_setting('synchronous_commit') = 'off'";
    } else {
        settings += "SET statement_timeout = '30s'";
    }
    pqxx::nontransaction(*this).exec(settings);
}
