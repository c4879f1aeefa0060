#pragma once

#include "modules/IGenericModule.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class IAppMediator;

/// A module with its running flag, and the static door through which all code of the library reaches the host.
///
/// The static operations tolerate that there is no mediator yet. Code that uses Sm_pMediator itself has to know that
/// there is one: constructors from saved data and the code of windows do.
class KALVENTO_API PluginBase : public IGenericModule {
public:
    /// Without file filters.
    PluginBase(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension);
    PluginBase(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension,
               std::wstring a_stateLoadFileFilter, std::wstring a_stateSaveFileFilter);

    /// Drops the pointer: a module without windows has no use for a style.
    void SetDefaultStyle(std::shared_ptr<StyleBase> a_style) override;

    /// Winds the module down: ends its threads and subscriptions. Called by StopWork, with IsRunning false already.
    virtual void OnStopWork() = 0;

    /// A module is created running; this only follows a StopWork, and calls nothing.
    void Run() { m_isRunning = true; }
    /// From now on the module is silent: IsRunning is false, then OnStopWork is called. The host calls it, on the main
    /// thread, before the module is destroyed.
    void StopWork();
    /// May be asked from any thread.
    bool IsRunning() const { return m_isRunning; }

    /// Stores the one mediator of the process; not owned. Called by the host on the main thread before there is any
    /// other thread, which is why the pointer is then read without a lock. Null removes it again.
    static void Init(IAppMediator* a_pMediator) { Sm_pMediator = a_pMediator; }
    static IAppMediator* GetAppMediator() { return Sm_pMediator; }
    static bool IsAppMediatorValid() { return Sm_pMediator != nullptr; }

    /// The number of the thread that constructed the mediator; 0 without a mediator.
    static std::uint32_t GetMainThreadId();
    /// Raises KalventoException on every thread but the main one, and without a mediator there too. For code that could
    /// be reached from a worker thread and must not run there.
    static void CheckMainThreadCondition();

    /// Shows the text in the host's standard way; nothing without a mediator.
    static void ShowMessage(std::wstring_view a_text);
    /// A message box with its answer, as IAppMediator::ShowMessage; -1 without a mediator.
    static int ShowMessage(std::wstring_view a_caption, std::wstring_view a_text, unsigned int a_flags);
    /// A passing notification that doesn't stop the user; nothing without a mediator.
    static void ShowNotificationMessage(std::wstring_view a_text);

    /// Null until Init.
    static IAppMediator* Sm_pMediator;

private:
    std::atomic<bool> m_isRunning = true;
};
