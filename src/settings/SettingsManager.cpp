#include "settings/SettingsManager.h"

#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "velo/Log.h"

#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <system_error>

namespace {

// Makes way for a file that is about to be written over one that won't load: a slip in an edited file must not cost the
// user all that is in it. False where the old file could not be moved and must be left alone.
bool KeepDamagedFileAside(std::wstring_view a_path)
{
    const std::filesystem::path path = WidePath::ToPath(a_path);
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, error)))
        return true;
    const auto aside = FileTools::KeepAside(path, std::chrono::system_clock::now(), error);
    VeloTools::Log::Instance().Write(
        "SettingsManager::KeepDamagedFileAside", __LINE__,
        aside ? fmt::format(fmt::runtime("Uszkodzony plik ustawień {} zachowano jako {}"_cp1250),
                            CodePage::WideToCp1250(a_path), CodePage::WideToCp1250(WidePath::ToWide(*aside)))
              : fmt::format(fmt::runtime("Nie można zachować uszkodzonego pliku ustawień {}: {}"_cp1250),
                            CodePage::WideToCp1250(a_path), kalvento::internal::ErrorText(error)));
    return aside.has_value();
}

std::unique_ptr<Settings> Load(std::wstring_view a_path, std::string_view a_rootName)
{
    auto node = std::make_unique<Settings>();
    return node->LoadFromFile(a_path, a_rootName) ? std::move(node) : nullptr;
}

} // namespace

std::wstring SettingsManager::GenerateSettingsFilePath(bool a_userFile, const std::wstring& a_name)
{
    static const std::wstring extension = L".xml";
    return GenerateSettingsFilePath(a_userFile, a_name, extension);
}

std::wstring SettingsManager::GenerateSettingsFilePath(bool a_userFile, const std::wstring& a_name,
                                                       const std::wstring& a_extension)
{
    const KalventoPaths& paths = KalventoPaths::Instance();
    const std::wstring& folder =
        a_userFile ? paths.GetNativeUserSettingsPath() : paths.GetNativeDefaultSettingsPath();
    return WidePath::ToWide(WidePath::ToPath(folder) / WidePath::ToPath(a_name + a_extension));
}

std::unique_ptr<Settings> SettingsManager::LoadCurrentSettingsNode(std::wstring_view a_userPath,
                                                                   std::wstring_view a_factoryPath,
                                                                   std::string_view a_rootName)
{
    if (auto user = Load(a_userPath, a_rootName))
        return user;
    auto factory = Load(a_factoryPath, a_rootName);
    if (factory && KeepDamagedFileAside(a_userPath))
        factory->SaveToFile(a_userPath, a_rootName);
    return factory;
}

std::unique_ptr<Settings> SettingsManager::LoadFabricSettingsNode(std::wstring_view a_factoryPath,
                                                                  std::string_view a_rootName)
{
    return Load(a_factoryPath, a_rootName);
}

bool SettingsManager::SaveUserSettingsNode(const Settings& a_node, std::wstring_view a_userPath,
                                           std::string_view a_rootName)
{
    return (Load(a_userPath, a_rootName) || KeepDamagedFileAside(a_userPath)) &&
           a_node.SaveToFile(a_userPath, a_rootName);
}
