#include "sql_provider/SqlProviderSettings.h"

#include "platform/CodePage.h"
#include "settings/TakeSetting.h"

void SqlProviderSettings::WriteSettings(Settings& a_settings) const
{
    a_settings[XML_CONNECTION] = CodePage::Utf8ToWide(connection);
}

void SqlProviderSettings::ReadSettings(const Settings& a_settings)
{
    std::wstring text = CodePage::Utf8ToWide(connection);
    TakeSetting(a_settings, XML_CONNECTION, text);
    connection = CodePage::WideToUtf8(text);
}
