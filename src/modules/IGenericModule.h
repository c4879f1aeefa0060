#pragma once

#include "modules/BookmarkFamilyType.h"
#include "modules/EGenericModule.h"
#include "platform/Export.h"
#include "platform/Handles.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>

class CWnd;
class Settings;
class StyleBase;

/// What the host knows of a module. The host owns its modules, and destroys them after everything that refers to them.
///
/// All virtual operations are called by the host, on the main thread, after PluginBase::Init. The order over a module's
/// life: construction and its own Init (ProviderBase, ConsumerBase), these two before there are
/// windows to be touched; UnserialiseState once, then PostUnserialisePanelState whenever a panel has been rebuilt,
/// SerialiseState as often as the host saves, StopWork. Settings of an older version pass through the UpdateOldVersion
/// operations before UnserialiseState sees them.
class KALVENTO_API IGenericModule {
public:
    /// a_name identifies the module everywhere, also in saved data: it must not change from one release to the next.
    /// a_stateFileExtension: of the module's state files. The filters are those of the dialogs that open and save them.
    IGenericModule(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension,
                   std::wstring a_stateLoadFileFilter, std::wstring a_stateSaveFileFilter);

    virtual ~IGenericModule();

    /// Where the object that is active in the module would be saved; empty where there is none.
    virtual std::wstring GetActiveObjectSavePath() const { return {}; }
    /// A static module can't be switched off by the user.
    virtual bool IsStaticModule() const { return false; }
    /// Whether the user may save the module's windows one by one.
    virtual bool SaveObjectAvailable() const = 0;
    /// Whether the user may keep a window's look as a template.
    virtual bool SaveTemplateAvailable() const { return false; }
    /// Saves one window. a_mode is what the host's save dialog answered. True when that is done or not needed.
    virtual bool SaveWindowToFile(HWND a_window, const wchar_t* a_path, int a_mode) = 0;
    /// Opens a window from its saved node, which may be consumed. a_name: of the window; a_asTemplate: the node is a
    /// template and not one window's state. False where the module doesn't know such a window.
    virtual bool OpenWindowFromSettings(CWnd* /*a_parent*/, bool /*a_asTemplate*/,
                                        std::wstring_view /*a_name*/, Settings&& /*a_settings*/)
    {
        return false;
    }

    /// Writes the module's state into an empty node.
    virtual void SerialiseState(Settings& a_settings) const = 0;
    /// Takes over what SerialiseState wrote. No window exists yet.
    virtual void UnserialiseState(const Settings& a_settings) = 0;
    /// The same node again when a panel has been rebuilt: now there is a window to attach to.
    virtual void PostUnserialisePanelState(const Settings& a_settings, CWnd* a_panel) = 0;
    /// The session data was emptied: there is no state to come back to.
    virtual void EmptySessionNotification(CWnd* a_panel) = 0;

    /// The style of the current skin, shared with the skin and with other modules. Called under the lock of the styles
    /// manager: don't call back into it.
    virtual void SetDefaultStyle(std::shared_ptr<StyleBase> a_style) = 0;

    /// The version of the settings that this module writes. The host calls the three below for older ones.
    virtual int GetCurrentSettingsVersion() const { return 0; }
    /// Converts the user's settings into a new tree. Here and below: true when the data were converted.
    virtual bool UpdateOldVersionUserSettings(const Settings& /*a_old*/, Settings& /*a_new*/) const
    {
        return false;
    }
    /// Converts the settings of a window in their place.
    virtual bool UpdateOldVersionDlgSettings(Settings& /*a_settings*/) const { return false; }
    /// Converts a template in its place.
    virtual bool UpdateOldVersionTemplateSettings(Settings& /*a_settings*/) const { return false; }

    /// Icon for the title bars of the module's windows, not owned by the caller; null for none.
    virtual HICON GetTitleBarIconHandle() = 0;
    /// The skin or the scale changed: make the icon anew.
    virtual void UpdateTitleBarIcon() {}

    EGenericModule GetModuleKind() const { return m_moduleKind; }
    /// The number of the kind for the kinds 1 to 13, else FamilyNone.
    BookmarkFamilyType::Value GetBookmarkFamilyType() const { return m_bookmarkFamilyType; }
    const std::wstring& GetName() const { return m_name; }
    const std::wstring& StateFileExtension() const { return m_stateFileExtension; }
    const std::wstring& StateLoadFileFilter() const { return m_stateLoadFileFilter; }
    const std::wstring& StateSaveFileFilter() const { return m_stateSaveFileFilter; }

    /// Gives a window a name that no other living window of this module has, and keeps it until it is unregistered: the
    /// template itself, or the template with the lowest free number from 2 on, as in "Wykres (2)". An empty template
    /// gives an empty name and registers nothing. Main thread only, no lock.
    std::wstring RegisterConsumerName(const std::wstring& a_nameTemplate);
    /// Frees the name for the next window. An empty or an unknown name is ignored. Main thread only.
    void UnregisterConsumerName(const std::wstring& a_name) { m_consumerNames.erase(a_name); }

    IGenericModule(const IGenericModule&) = delete;
    IGenericModule& operator=(const IGenericModule&) = delete;

private:
    EGenericModule m_moduleKind;
    BookmarkFamilyType::Value m_bookmarkFamilyType;
    std::wstring m_stateFileExtension;
    std::wstring m_stateLoadFileFilter;
    std::wstring m_stateSaveFileFilter;
    std::wstring m_name;
    std::set<std::wstring> m_consumerNames; // of the windows that are alive
};
