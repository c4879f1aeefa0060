#include "sql_provider/SqlProvider.h"

#include "PostgresCluster.h"
#include "SqlTestTools.h"
#include "sql_provider/SqlWriter.h"
#include "support/ProviderContract.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace {

/// Instruments in a database of their own, served by the plug-in's provider.
class SqlSubject : public ProviderSubject {
public:
    SqlSubject()
        : m_connection(PostgresCluster::Get()->NewDatabase()),
          m_writer(m_connection),
          m_provider(m_connection)
    {
        for (const char* isin : {"PLSQL0000001", "PLSQL0000002"}) {
            m_writer.CreateInstrument(TickInstrument(isin));
            m_writer.AppendRows(isin, 0, RowsOf(19'900, 20'100));
        }
        m_provider.SwitchConnection(true);
        while (m_provider.GetConnectionStatus() != EConnectionStatusConnected ||
               m_provider.GetAssets().empty())
            std::this_thread::yield();
    }
    ProviderBase& Provider() override { return m_provider; }
    bool MakeLiveData(const Asset& a_asset) override
    {
        const std::lock_guard lock(m_mutex);
        const std::uint64_t next = m_writer.GetRowCount(a_asset.GetIsin());
        m_writer.AppendRows(a_asset.GetIsin(), next, RowsOf(19'900 + next, 19'901 + next));
        return true;
    }

private:
    std::mutex m_mutex;
    std::string m_connection;
    SqlWriter m_writer;
    SqlProvider m_provider;
};

std::vector<ProviderContractCase> Cases()
{
    if (PostgresCluster::Get() == nullptr)
        return {};
    return {{"Sql", [] { return std::make_unique<SqlSubject>(); }}};
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Databases, ProviderContract, testing::ValuesIn(Cases()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });
