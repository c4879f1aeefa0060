#include "sql_provider/SqlProvider.h"

#include "sql_provider/SqlStore.h"

#include <memory>

SqlProvider::SqlProvider(const std::string& a_connection)
    : StoreProvider(EGenericModuleNone, S_name, std::make_unique<SqlStore>(SqlAddress(a_connection))),
      m_hasDatabase(!SqlAddress(a_connection).IsEmpty())
{}

std::wstring SqlProvider::GetStatusLabel() const
{
    return m_hasDatabase ? StoreProvider::GetStatusLabel() : L"nie wskazano bazy";
}
