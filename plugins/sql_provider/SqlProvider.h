#pragma once

#include "provider_kit/StoreProvider.h"
#include "sql_provider/SqlProviderSettings.h"
#include "sql_store/SqlStore.h"

#include <string>

/// The provider "Baza": serves the instruments of a database that terminals share. docs/sql_provider.md is for its
/// users.
class SqlProvider : public StoreProvider {
public:
    using UserSettings = SqlProviderSettings;
    static constexpr const wchar_t* S_name = L"Baza";

    explicit SqlProvider(const SqlProviderSettings& a_settings) : SqlProvider(a_settings.connection) {}
    /// a_connection: as SqlAddress takes it, UTF-8, and raises what that raises; empty where the user named no
    /// database.
    explicit SqlProvider(const std::string& a_connection, SqlStore::Pauses a_pauses = SqlStore::Pauses());

    /// Says so where no database was named.
    EStatusLevel GetStatusLevel() const override;
    std::wstring GetStatusLabel() const override;

private:
    bool m_hasDatabase;
};
