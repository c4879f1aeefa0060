#include "sql_provider/SqlProviderSettings.h"

#include "platform/CodePage.h"
#include "settings/Settings.h"

void SqlProviderSettings::WriteSettings(Settings& a_settings) const
{
    a_settings[XML_CONNECTION] = CodePage::Utf8ToWide(connection);
}

void SqlProviderSettings::ReadSettings(const Settings& a_settings)
{
    if (const Settings& node = a_settings[XML_CONNECTION]; node.Exists())
        connection = CodePage::WideToUtf8(static_cast<std::wstring>(node));
}
