#pragma once

#include "platform/Export.h"

#include <optional>
#include <string>
#include <string_view>

/// Where the application keeps everything on disk; docs/paths.md shows the folder tree. All of it follows from the
/// place of the running executable and the user's documents folder, so an installation may be moved as a whole.
///
/// There is one instance a process. Initialize runs on the main thread before the other threads start; from then on
/// nothing changes, and Instance and the accessors may be called from any thread.
class KALVENTO_API KalventoPaths {
public:
    /// a_name: folder of the application below the user's documents. Forms the paths and makes the folders that the
    /// application writes into: Data, Logs, CrashReports, Szablony, UserSettings and the user's documents folder. A
    /// folder that can't be made is no failure here: it shows when a file in it is written.
    explicit KalventoPaths(std::wstring_view a_name);

    /// Destroys the instance, if there is one, and builds a new one: references from Instance die. Where building
    /// raises (no memory), there is no instance.
    static void Initialize(std::wstring_view a_name);
    /// Raises std::bad_optional_access, "Bad optional access", where there is no instance.
    static const KalventoPaths& Instance();

    /// Folder of the running executable.
    const std::wstring& GetNativeBinaryPath() const { return m_binary; }
    /// The folder above that of the executable; the next eight lie below it.
    const std::wstring& GetNativeInstallPath() const { return m_install; }
    const std::wstring& GetNativeDataPath() const { return m_data; }
    const std::wstring& GetNativeLogPath() const { return m_log; }
    const std::wstring& GetNativeCrashPath() const { return m_crash; }
    const std::wstring& GetNativeStylesPath() const { return m_styles; }
    const std::wstring& GetNativeResourcesPath() const { return m_resources; }
    /// The accessor's spelling differs from the folder's, "AmiBroker": modules call it by this name.
    const std::wstring& GetNativeAmirBrokerPath() const { return m_amiBroker; }
    const std::wstring& GetNativeDefaultSettingsPath() const { return m_defaultSettings; }
    const std::wstring& GetNativeUserSettingsPath() const { return m_userSettings; }
    /// The application's folder in the user's documents; the next four lie below it.
    const std::wstring& GetNativeUserDocumentsPath() const { return m_userDocuments; }
    const std::wstring& GetNativeUserDesktopsPath() const { return m_userDesktops; }
    const std::wstring& GetNativeUserWindowsPath() const { return m_userWindows; }
    const std::wstring& GetNativeUserTemplatesPath() const { return m_userTemplates; }
    const std::wstring& GetNativeUserQRLPath() const { return m_userQrl; }

private:
    void CreateFolders() const;

    static std::optional<KalventoPaths> m_pathManager;

    std::wstring m_binary;
    std::wstring m_install;
    std::wstring m_data;
    std::wstring m_log;
    std::wstring m_crash;
    std::wstring m_styles;
    std::wstring m_resources;
    std::wstring m_amiBroker;
    std::wstring m_defaultSettings;
    std::wstring m_userSettings;
    std::wstring m_userDocuments;
    std::wstring m_userDesktops;
    std::wstring m_userWindows;
    std::wstring m_userTemplates;
    std::wstring m_userQrl;
};
