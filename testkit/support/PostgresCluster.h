#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

#include <memory>
#include <string>

/// A PostgreSQL server of the test program's own: a fresh cluster in a temporary folder, on a free port of this machine
/// only, that ends with the program, however that ends. The server refuses to run as root, so there it runs as
/// `postgres`.
class PostgresCluster {
public:
    /// The one of this program, started at the first call; null where the server isn't installed.
    static PostgresCluster* Get();

    /// Raises std::runtime_error with the server's own words where it can't be made.
    PostgresCluster();
    ~PostgresCluster();

    /// Makes an empty database and returns how to connect to it.
    std::string NewDatabase();

    /// Starts the server and waits until it answers. To be called on a thread that outlives it: it dies with that one.
    void Start();
    /// As a power cut would: no process of the server does anything any more.
    void Kill();
    /// As `pg_ctl stop -m immediate`: no clean-up, but the clients are told.
    void StopAtOnce();
    /// All processes stand still, and go on.
    void Freeze();
    void Thaw();

private:
    void Run(const std::string& a_command) const;
    void Signal(int a_signal) const;
    bool Answers() const;
    std::string Connection(const std::string& a_database) const;

    TemporaryFolder m_folder;
    std::string m_port;
    pid_t m_server = -1;
    int m_databases = 0;
};
