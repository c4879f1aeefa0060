#include "history_operations/HistoryPathManager.h"
#include "platform/CodePage.h"
#include "settings/KalventoPaths.h"
#include "settings/SettingsManager.h"

#include <exception>
#include <iostream>
#include <string>
#include <string_view>

// Prints the paths of an application that is installed where this program lies: a test copies it into a folder tree of
// its own. Arguments: names of the user's folder, initialised one after the other.
namespace {

void Print(std::string_view a_name, const std::wstring& a_path)
{
    std::cout << a_name << '=' << CodePage::WideToUtf8(a_path) << '\n';
}

void PrintPaths()
{
    const KalventoPaths& paths = KalventoPaths::Instance();
    Print("Binary", paths.GetNativeBinaryPath());
    Print("Install", paths.GetNativeInstallPath());
    Print("Data", paths.GetNativeDataPath());
    Print("Log", paths.GetNativeLogPath());
    Print("Crash", paths.GetNativeCrashPath());
    Print("Styles", paths.GetNativeStylesPath());
    Print("Resources", paths.GetNativeResourcesPath());
    Print("AmirBroker", paths.GetNativeAmirBrokerPath());
    Print("DefaultSettings", paths.GetNativeDefaultSettingsPath());
    Print("UserSettings", paths.GetNativeUserSettingsPath());
    Print("UserDocuments", paths.GetNativeUserDocumentsPath());
    Print("UserDesktops", paths.GetNativeUserDesktopsPath());
    Print("UserWindows", paths.GetNativeUserWindowsPath());
    Print("UserTemplates", paths.GetNativeUserTemplatesPath());
    Print("UserQRL", paths.GetNativeUserQRLPath());
    Print("UserFile", SettingsManager::GenerateSettingsFilePath(true, L"Żółty"));
    Print("FactoryFile", SettingsManager::GenerateSettingsFilePath(false, L"a.b", L".txt"));
}

void PrintHistoryPaths()
{
    HistoryPathManager manager;
    Print("HistoryBefore", manager.GetHistoryPath());
    manager.InitPaths(std::wstring_view(L"Dostawca\0reszta", 15));
    Print("History", manager.GetHistoryPath());
    Print("Symbol", manager.GetHistorySymbolPath("\xA3\xF3"
                                                 "d\x9F")); // CP1250
    Print("Again", manager.GetHistorySymbolPath("\xA3\xF3"
                                                "d\x9F"));
    Print("Operations", manager.GetOperationFilePath("WIG20"));
    const HistoryPathManager copy = manager;
    Print("Copy", copy.GetHistoryPath());
}

} // namespace

int main(int a_count, char** a_arguments)
{
    try {
        KalventoPaths::Instance();
        return 1;
    } catch (const std::bad_optional_access& failure) {
        std::cout << "Before=" << failure.what() << '\n';
    }
    try {
        for (int place = 1; place < a_count; ++place) {
            KalventoPaths::Initialize(CodePage::Utf8ToWide(a_arguments[place]));
            PrintPaths();
        }
        PrintHistoryPaths();
    } catch (const std::exception& failure) {
        std::cout << "Failure=" << failure.what() << '\n';
        return 1;
    }
    return 0;
}
