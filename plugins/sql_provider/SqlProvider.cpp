#include "sql_provider/SqlProvider.h"

#include <memory>

SqlProvider::SqlProvider(const std::string& a_connection, SqlStore::Pauses a_pauses)
    : StoreProvider(EGenericModuleNone, S_name,
                    std::make_unique<SqlStore>(SqlAddress(a_connection), a_pauses)),
      m_hasDatabase(!SqlAddress(a_connection).IsEmpty())
{}

// Without a database it has nothing to do, and nobody need wait for it.
EStatusLevel SqlProvider::GetStatusLevel() const
{
    return m_hasDatabase ? StoreProvider::GetStatusLevel() : EStatusLevelIdle;
}

std::wstring SqlProvider::GetStatusLabel() const
{
    return m_hasDatabase ? StoreProvider::GetStatusLabel() : L"nie wskazano bazy";
}
