// A tree as a text and as a file: part of the class Settings, but apart from its source, on which the written form is
// built.
#include "platform/ErrorText.h"
#include "settings/Settings.h"

#include "platform/CodePage.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"
#include "settings/SettingsForm.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <fmt/format.h>

#include <system_error>

using kalvento::internal::SettingsForm;

namespace {

constexpr std::string_view S_textRootName = "settings";

void LogUnread(std::string_view a_name, const std::string& a_problem)
{
    VeloTools::Log::Instance().Write(
        "Settings::LoadFromFile", __LINE__,
        fmt::format(fmt::runtime("Nie można wczytać pliku {}: {}"_cp1250), a_name, a_problem));
}

} // namespace

std::string Settings::ConvertToString() const
{
    try {
        const SettingsForm::Written written =
            SettingsForm::Write(*this, S_textRootName, SettingsForm::ELayoutAsciiLine);
        if (written.problem.empty())
            return written.text;
        VeloTools::Log::Instance().Write("Settings::ConvertToString", __LINE__,
                                         "Nie można zapisać ustawień jako tekstu: "_cp1250 + written.problem);
    } catch (...) {
        LogAllExceptions("Settings::ConvertToString", __LINE__);
    }
    return {};
}

bool Settings::ConvertFromString(std::string_view a_text)
{
    try {
        Settings tree;
        const std::string problem = SettingsForm::Read(a_text, S_textRootName, tree);
        if (problem.empty()) {
            swap(tree);
            return true;
        }
        VeloTools::Log::Instance().Write("Settings::ConvertFromString", __LINE__,
                                         "Nie można odczytać ustawień z tekstu: "_cp1250 + problem);
    } catch (...) {
        LogAllExceptions("Settings::ConvertFromString", __LINE__);
    }
    return false;
}

bool Settings::LoadFromFile(std::wstring_view a_path, std::string_view a_rootName)
{
    try {
        std::error_code error;
        const auto text = FileTools::ReadFile(WidePath::ToPath(a_path), SettingsForm::S_mostBytes, error);
        // A file that isn't there yet is the usual first start, not news.
        if (error == std::errc::no_such_file_or_directory)
            return false;
        const std::string name = CodePage::WideToCp1250(a_path);
        if (text)
            return LoadFromBytes(*text, name, a_rootName).empty();
        LogUnread(name, kalvento::internal::ErrorText(error));
    } catch (...) {
        LogAllExceptions("Settings::LoadFromFile", __LINE__);
    }
    return false;
}

std::string Settings::LoadFromBytes(std::string_view a_bytes, std::string_view a_name,
                                    std::string_view a_rootName)
{
    Settings tree;
    std::string problem = SettingsForm::Read(a_bytes, a_rootName, tree);
    if (problem.empty())
        swap(tree);
    else
        LogUnread(a_name, problem);
    return problem;
}

std::string Settings::SaveToBytes(std::string_view a_rootName) const
{
    SettingsForm::Written written = SettingsForm::Write(*this, a_rootName, SettingsForm::ELayoutFile);
    if (!written.problem.empty())
        VeloTools::Log::Instance().Write("Settings::SaveToBytes", __LINE__, written.problem);
    return std::move(written.text);
}

bool Settings::SaveToFile(std::wstring_view a_path, std::string_view a_rootName) const
{
    try {
        const SettingsForm::Written written =
            SettingsForm::Write(*this, a_rootName, SettingsForm::ELayoutFile);
        std::error_code error;
        if (written.problem.empty() && FileTools::ReplaceFile(WidePath::ToPath(a_path), written.text, error))
            return true;
        VeloTools::Log::Instance().Write(
            "Settings::SaveToFile", __LINE__,
            fmt::format(fmt::runtime("Nie można zapisać pliku {}: {}"_cp1250), CodePage::WideToCp1250(a_path),
                        written.problem.empty() ? kalvento::internal::ErrorText(error) : written.problem));
    } catch (...) {
        LogAllExceptions("Settings::SaveToFile", __LINE__);
    }
    return false;
}
