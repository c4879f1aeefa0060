#include "file_provider/FileProviderSettings.h"

#include "platform/CodePage.h"
#include "platform/WidePath.h"
#include "settings/TakeSetting.h"
#include "velo/Log.h"

#include <charconv>
#include <string>

namespace {

// By hand, since a text that isn't a number would read as zero, which shows the whole day at once.
void TakeSpeed(const Settings& a_settings, double& a_speed)
{
    std::string text;
    TakeSetting(a_settings, FileProviderSettings::XML_SPEED, text);
    double speed = 0.0;
    const char* const end = text.data() + text.size();
    if (const auto read = std::from_chars(text.data(), end, speed); read.ec == std::errc() && read.ptr == end)
        a_speed = speed;
    else if (!text.empty())
        VeloTools::Log::Instance().Write("FileProviderSettings::ReadSettings", __LINE__,
                                         "Opcja Speed: \""_cp1250 + text +
                                             "\" nie jest liczbą, oczekiwano na przykład 60 albo 0.5"_cp1250);
}

} // namespace

void FileProviderSettings::WriteSettings(Settings& a_settings) const
{
    a_settings[XML_FOLDER] = WidePath::ToWide(options.folder);
    a_settings[XML_DAY] = options.day;
    a_settings[XML_SORT] = options.sort;
    a_settings[XML_SPEED] = options.speed;
    a_settings[XML_START] = options.start;
}

void FileProviderSettings::ReadSettings(const Settings& a_settings)
{
    std::wstring folder = WidePath::ToWide(options.folder);
    TakeSetting(a_settings, XML_FOLDER, folder);
    options.folder = WidePath::ToPath(folder);
    TakeSetting(a_settings, XML_DAY, options.day);
    TakeSetting(a_settings, XML_SORT, options.sort);
    TakeSpeed(a_settings, options.speed);
    TakeSetting(a_settings, XML_START, options.start);
    TakeSetting(a_settings, XML_LIST_ONLY, options.listOnly);
}
