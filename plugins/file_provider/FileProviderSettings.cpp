#include "file_provider/FileProviderSettings.h"

#include "platform/WidePath.h"
#include "settings/Settings.h"

void FileProviderSettings::WriteSettings(Settings& a_settings) const
{
    a_settings[XML_FOLDER] = WidePath::ToWide(options.folder);
    a_settings[XML_DAY] = options.day;
    a_settings[XML_SPEED] = options.speed;
    a_settings[XML_START] = options.start;
}

void FileProviderSettings::ReadSettings(const Settings& a_settings)
{
    if (const Settings& folder = a_settings[XML_FOLDER]; folder.Exists())
        options.folder = WidePath::ToPath(static_cast<std::wstring>(folder));
    if (const Settings& day = a_settings[XML_DAY]; day.Exists())
        options.day = static_cast<const std::string&>(day);
    if (const Settings& speed = a_settings[XML_SPEED]; speed.Exists())
        options.speed = speed;
    if (const Settings& start = a_settings[XML_START]; start.Exists())
        options.start = static_cast<const std::string&>(start);
}
