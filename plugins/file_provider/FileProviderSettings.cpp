#include "file_provider/FileProviderSettings.h"

#include "platform/WidePath.h"
#include "settings/TakeSetting.h"

void FileProviderSettings::WriteSettings(Settings& a_settings) const
{
    a_settings[XML_FOLDER] = WidePath::ToWide(options.folder);
    a_settings[XML_DAY] = options.day;
    a_settings[XML_SPEED] = options.speed;
    a_settings[XML_START] = options.start;
}

void FileProviderSettings::ReadSettings(const Settings& a_settings)
{
    std::wstring folder = WidePath::ToWide(options.folder);
    TakeSetting(a_settings, XML_FOLDER, folder);
    options.folder = WidePath::ToPath(folder);
    TakeSetting(a_settings, XML_DAY, options.day);
    TakeSetting(a_settings, XML_SPEED, options.speed);
    TakeSetting(a_settings, XML_START, options.start);
}
