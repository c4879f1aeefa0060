#pragma once

#include "sql_store/SqlWriter.h"
#include "support/PostgresCluster.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

/// A test with an empty database of its own and a writer to it; skipped where no server is installed.
class DatabaseTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_cluster = PostgresCluster::Get();
        if (m_cluster == nullptr)
            GTEST_SKIP() << "no PostgreSQL server here: install the package postgresql";
        m_connection = m_cluster->NewDatabase();
        m_writer.emplace(m_connection);
    }

    PostgresCluster* m_cluster = nullptr;
    std::string m_connection;
    std::optional<SqlWriter> m_writer;
};
