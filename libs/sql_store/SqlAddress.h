#pragma once

#include <chrono>
#include <stdexcept>
#include <string>

/// A password stands where others can read it; the text (CP1250) says where it may stand.
class GivenPassword : public std::invalid_argument {
public:
    GivenPassword();
};

/// Where a database is, taken from the text forms that users of PostgreSQL know: "host=... dbname=... user=..." or
/// "postgresql://...". Forms: https://www.postgresql.org/docs/15/libpq-connect.html#LIBPQ-CONNSTRING
class SqlAddress {
public:
    /// Empty: no database is named. Raises std::invalid_argument (CP1250) for a text that isn't such a form; it may
    /// hold a password, so the text of the exception repeats nothing of it. Raises GivenPassword for one that holds a
    /// password: whoever lists the processes, or reads a file of settings, would see it.
    explicit SqlAddress(const std::string& a_connection);

    bool IsEmpty() const { return m_connection.empty(); }
    /// For libpq, with settings that detect a vanished machine in about 20 seconds.
    const std::string& GetConnection() const { return m_connection; }
    /// For the user and the log: database and host, without user and password. UTF-8.
    const std::string& GetDescription() const { return m_description; }
    /// How long one attempt to connect may take: connect_timeout of the text, otherwise five seconds.
    std::chrono::seconds GetPatience() const { return m_patience; }

private:
    std::string m_connection;
    std::string m_description;
    std::chrono::seconds m_patience{5};
};
