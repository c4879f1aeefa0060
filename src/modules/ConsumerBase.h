#pragma once

#include "modules/ChangeSkinMode.h"
#include "modules/IConsumer.h"
#include "modules/PluginBase.h"
#include "platform/Export.h"
#include "platform/Handles.h"

#include <string>
#include <string_view>

class Asset;
class CCmdTarget;
class CXTPPropertyGrid;
class CXTPTaskPanel;

namespace Gdiplus {
class Image;
}

/// A plug-in that shows or uses market data. Its windows live on the main thread, while the callbacks of IConsumer come
/// on the provider's: a consumer passes them on by a posted window message, or guards itself with
/// CheckMainThreadCondition. A message that is sent would wait for the main thread, which may be waiting in
/// StopSubscription for that callback. The host calls all operations added here on the main thread, after Init,
/// which comes first and on the main thread, too.
class KALVENTO_API ConsumerBase : public PluginBase, public IConsumer {
public:
    ConsumerBase(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension);
    ConsumerBase(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension,
                 std::wstring a_stateLoadFileFilter, std::wstring a_stateSaveFileFilter);

    bool SaveObjectAvailable() const override { return true; }
    bool SaveTemplateAvailable() const override { return true; }
    /// False: a consumer whose windows can be saved overrides it.
    bool SaveWindowToFile(HWND /*a_window*/, const wchar_t* /*a_path*/, int /*a_mode*/) override
    {
        return false;
    }
    void SerialiseState(Settings& /*a_settings*/) const override {}
    void UnserialiseState(const Settings& /*a_settings*/) override {}
    void PostUnserialisePanelState(const Settings& /*a_settings*/, CWnd* /*a_panel*/) override {}
    void EmptySessionNotification(CWnd* /*a_panel*/) override {}

    /// Second stage of construction, called by the host once; no window is touched yet. False: the consumer can't work,
    /// and the host drops its plug-in. By now all providers are found.
    virtual bool Init() { return true; }
    /// Adds the asset to the given window. 0 means that nothing was added.
    virtual unsigned int AddInstrument(HWND /*a_window*/, const Asset& /*a_asset*/) { return 0; }
    /// As above, from the quick dialog: calls AddInstrument, and tells the host if something was added.
    virtual unsigned int AddInstrumentFromQuickDialog(HWND a_window, const Asset& a_asset);
    /// The application's display settings changed.
    virtual void OnGlobalSettingsChanged() {}
    /// What new windows are called, before a number sets them apart: the module's name. Valid as long as the module.
    virtual const std::wstring& GetConsumerNewWindowNameTemplate() const { return GetName(); }
    /// Whether the module opens the file of that path.
    virtual bool WillHandleTheFile(std::wstring_view /*a_path*/) const { return false; }
    /// The host's main window has been created.
    virtual void OnPostMainWindowCreate(CWnd* /*a_mainWindow*/) {}
    /// The user chose another skin; SetDefaultStyle was called before. Pass it on to the windows.
    virtual void OnSkinChanged(ChangeSkinMode /*a_mode*/) {}
    /// All drawing tools are to be put down.
    virtual void OnTurnOffAllTools() {}
    /// Image that represents the module, not owned by the caller; null for none.
    virtual Gdiplus::Image* GetInfoImage() const { return nullptr; }

    // The module's page in the dialog of options: filled when it opens, applied when the user confirms.
    virtual void FillSettingsControls(CXTPTaskPanel& /*a_panel*/, CXTPPropertyGrid& /*a_grid*/) {}
    virtual void ApplySettingsFromControls(const CXTPPropertyGrid& /*a_grid*/) {}
    virtual void RestoreDefaultSettings() {}

    /// The receiver of this consumer's commands, as the host says. There must be a mediator.
    CCmdTarget* GetCmdTarger() const;
};
