#pragma once

#include "platform/CPoint.h"
#include "platform/ColorRef.h"
#include "platform/Export.h"
#include "velo/Process.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class Asset;
class CCmdTarget;
class CWnd;
class ConsumerBase;
class DragDropManager;
class IChooseAssetDlgFactory;
class IGeneralSettings;
class IGenericModule;
class IKalventoContextMenu;
class KalventoWindow;
class ModuleWndBase;
class ProviderBase;
class Settings;

/// The host, as the library and the modules see it. There is exactly one in a process, constructed on the main thread:
/// that is what makes a thread the main one. PluginBase::Init makes it known; it outlives all modules.
///
/// Calls run one way: the library calls up through here, and the host calls down through the virtual operations of the
/// modules. Pointers that are handed out stay the host's.
///
/// Threads: the notifications of providers (AssetsChanged, NotifyChangeConnectionStatus, the two of the progress bar)
/// and the three that show a text come from any thread, and the host itself hops to the main one. GetProviderByName and
/// GetModuleByName are called from any thread that reads saved data, PostToMainThread and RequestExit from any thread
/// at all. All others are called on the main thread only.
///
/// These are the operations that somebody calls. What only a host and its plug-ins would agree on is not here until
/// something needs it; a new operation goes to its place in this order, and all plug-ins are rebuilt.
class KALVENTO_API IAppMediator {
public:
    /// Takes the calling thread for the main one and makes the drag manager.
    IAppMediator();
    virtual ~IAppMediator();

    /// Ends the child processes that were to be kept (asked first, forced after two seconds each) and forgets them. The
    /// host calls it at the end of work, after StopWork of the modules; an override calls this one.
    virtual void StopWork();

    // Modules.

    /// The provider module of that name, null if there is none. All saved assets and groups are resolved through it.
    virtual ProviderBase* GetProviderByName(std::wstring_view a_name) = 0;
    /// The module of that name, null if there is none.
    virtual IGenericModule* GetModuleByName(const std::wstring& a_name) = 0;

    // Texts for the user.

    /// A themed message box. Flags and result are those of the platform's message box: 4 asks yes or no, 6 answers yes.
    /// Returns when the user has answered. A host that is asked from a worker thread lets that thread wait.
    virtual int ShowMessage(std::wstring_view a_caption, std::wstring_view a_text, unsigned int a_flags) = 0;
    /// Shows the text in the host's standard way.
    virtual void ShowMessage(std::wstring_view a_text) = 0;

    // News from providers.

    /// The provider's list of assets or of groups changed.
    virtual void AssetsChanged(ProviderBase* a_provider) = 0;
    /// Some provider's connection status changed: the host asks them all (ProviderBase, IStatusProvider).
    virtual void NotifyChangeConnectionStatus() = 0;

    // Windows and the ribbon.

    /// The window that is active in the host, null if none. Focus returns to it after a modal dialog.
    virtual KalventoWindow* GetActiveWindow() = 0;
    /// Called at each change of activation of a module window. a_byDeactivation: it changed because another window was
    /// left, not because this one was chosen.
    virtual void WindowActivationChanged(KalventoWindow* a_window, bool a_active, bool a_byDeactivation) = 0;
    /// A window's caption or context changed.
    virtual void RefreshRibbonContext() = 0;
    /// The caption of the ribbon's context must be redrawn.
    virtual void RefreshRibbonContextCaption() = 0;
    /// Colour of the current skin by its index; 5, 36 and 43 are asked for.
    virtual COLORREF GetSkinColor(int a_index) = 0;
    /// Default template of the module of that window, null if there is none.
    virtual std::shared_ptr<Settings> GetWindowTemplate(const ModuleWndBase* a_window) = 0;
    /// Whether the module has a template of that GUID.
    virtual bool TemplateExists(IGenericModule* a_module, const std::wstring& a_guid) = 0;
    /// The application's display settings.
    virtual const IGeneralSettings& GetGeneralSettings() = 0;
    /// Makes the control that chooses assets; null if the host has none.
    virtual IChooseAssetDlgFactory* GetChooseAssetDlgFactory() = 0;
    /// The object that receives the commands of that consumer; null for none.
    virtual CCmdTarget* GetCmdTarget(ConsumerBase* a_consumer) = 0;
    /// Whether the window is the active view.
    virtual bool IsActiveView(CWnd* a_window) = 0;
    /// The view now shown, null if none.
    virtual CWnd* GetActiveView() = 0;
    /// An instrument was added through the quick dialog.
    virtual void InstrumentAddedFromQuickDialog(const Asset& a_asset) = 0;
    /// Called at each change of size of a module window.
    virtual void WindowResized(ModuleWndBase* a_window) = 0;

    // The progress bar that all providers share.

    /// Adds to the total.
    virtual void AddOperationsToDoToProgress(unsigned int a_count) = 0;
    /// Sets how many are done.
    virtual void SetOperationsDidToProgress(unsigned int a_count) = 0;

    // Views and the desktop.

    /// When true, a window that is about to be shown gets the active view as its parent.
    virtual bool WindowsFollowActiveView() = 0;
    /// True while the desktop is being changed: windows then skip drawing, don't activate, and count as not on the
    /// active view.
    virtual bool IsDesktopChanging() = 0;
    /// The window lives in a view of the host and does not stand alone.
    virtual bool IsWindowInView(KalventoWindow* a_window) = 0;
    /// The user changed the layout: called after moving, sizing and closing windows, changing the width of a column,
    /// and confirming a chooser.
    virtual void DesktopChanged() = 0;
    /// Shows a context menu, which the host fills; a_point is in pixels of the screen.
    virtual void ShowContextMenu(IKalventoContextMenu* a_menu, CPoint a_point, CWnd* a_parent) = 0;
    /// A passing notification that doesn't stop the user.
    virtual void ShowNotificationMessage(std::wstring_view a_text) = 0;

    // The main thread.

    /// Has the function called on the main thread, after all that was posted before, and returns at once. This is how
    /// what a provider delivered on its thread reaches a window. What it raises is logged. After the mediator's
    /// StopWork functions are dropped uncalled, so a module that ends doesn't wait for its own. Any thread.
    virtual void PostToMainThread(std::function<void()> a_function) = 0;
    /// Asks the host to end with that exit code, as if the user had closed it; the first call counts. Any thread.
    virtual void RequestExit(int a_exitCode) = 0;

    /// The thread that constructed this object. May be asked from any thread.
    std::uint32_t GetMainThreadId() const { return m_mainThreadId; }
    DragDropManager* GetDragDropMgr() const { return m_dragDropManager.get(); }
    /// Whether a drag is running. May be asked from any thread.
    bool IsDroppingInProgress() const;

    /// Starts a program (VeloTools::Process::OpenProcess). False where that failed. a_keep: StopWork ends the program;
    /// otherwise it is let go at once. Main thread only.
    bool OpenProcess(std::wstring_view a_program, std::wstring_view a_arguments, bool a_keep);

    IAppMediator(const IAppMediator&) = delete;
    IAppMediator& operator=(const IAppMediator&) = delete;

private:
    std::unique_ptr<DragDropManager> m_dragDropManager;
    std::vector<VeloTools::Process::OpenProcessResult> m_processes; // those that StopWork is to end
    std::uint32_t m_mainThreadId;
};
