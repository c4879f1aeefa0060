#pragma once

#include "modules/IAppMediator.h"
#include "modules/IGeneralSettings.h"
#include "modules/IGenericModule.h"
#include "modules/PluginBase.h"
#include "modules/ProviderBase.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A host for tests. Makes itself known for as long as it lives, finds what a test puts into its lists, and notes down
/// what it was told. Its answers are public fields; where that is not enough a test overrides the operation.
class TestMediator : public IAppMediator {
public:
    struct DisplaySettings : public IGeneralSettings {
        int GetWindowMargin() const override { return margin; }
        std::uint32_t GetFlashTime() const override { return flashTime; }
        int margin = 4;
        std::uint32_t flashTime = 500;
    };

    TestMediator() { PluginBase::Init(this); }
    ~TestMediator() override { PluginBase::Init(nullptr); }

    // Not owned. The names are looked up each time.
    std::vector<ProviderBase*> providers;
    std::vector<IGenericModule*> modules;
    DisplaySettings displaySettings;
    int messageBoxAnswer = 6; // yes
    KalventoWindow* activeWindow = nullptr;
    CWnd* activeView = nullptr;
    CCmdTarget* cmdTarget = nullptr;
    IChooseAssetDlgFactory* chooseAssetDlgFactory = nullptr;
    std::shared_ptr<Settings> windowTemplate;
    bool templateExists = false;
    bool windowsFollowActiveView = false;
    bool desktopChanging = false;
    bool windowInView = false;

    /// What was told so far, in order: the operation's name, with its number or text after a blank.
    std::vector<std::string> Calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    /// The texts that were shown, in order.
    std::vector<std::wstring> Texts() const
    {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

    ProviderBase* GetProviderByName(std::wstring_view a_name) override
    {
        for (ProviderBase* provider : providers)
            if (provider->GetName() == a_name)
                return provider;
        return nullptr;
    }
    IGenericModule* GetModuleByName(const std::wstring& a_name) override
    {
        for (IGenericModule* module : modules)
            if (module->GetName() == a_name)
                return module;
        return nullptr;
    }
    int ShowMessage(std::wstring_view a_caption, std::wstring_view a_text, unsigned int a_flags) override
    {
        Note("ShowMessage " + std::to_string(a_flags), std::wstring(a_caption) + L'|' + std::wstring(a_text));
        return messageBoxAnswer;
    }
    void ShowMessage(std::wstring_view a_text) override { Note("ShowMessage", std::wstring(a_text)); }
    void AssetsChanged(ProviderBase* /*a_provider*/) override { Note("AssetsChanged"); }
    void NotifyChangeConnectionStatus() override { Note("NotifyChangeConnectionStatus"); }
    KalventoWindow* GetActiveWindow() override { return activeWindow; }
    void WindowActivationChanged(KalventoWindow* /*a_window*/, bool a_active, bool a_byDeactivation) override
    {
        Note(std::string("WindowActivationChanged ") + (a_active ? "1" : "0") +
             (a_byDeactivation ? "1" : "0"));
    }
    void RefreshRibbonContext() override { Note("RefreshRibbonContext"); }
    void RefreshRibbonContextCaption() override { Note("RefreshRibbonContextCaption"); }
    COLORREF GetSkinColor(int a_index) override { return static_cast<COLORREF>(a_index); }
    std::shared_ptr<Settings> GetWindowTemplate(const ModuleWndBase* /*a_window*/) override
    {
        return windowTemplate;
    }
    bool TemplateExists(IGenericModule* /*a_module*/, const std::wstring& /*a_guid*/) override
    {
        return templateExists;
    }
    const IGeneralSettings& GetGeneralSettings() override { return displaySettings; }
    IChooseAssetDlgFactory* GetChooseAssetDlgFactory() override { return chooseAssetDlgFactory; }
    CCmdTarget* GetCmdTarget(ConsumerBase* /*a_consumer*/) override { return cmdTarget; }
    bool IsActiveView(CWnd* a_window) override { return a_window != nullptr && a_window == activeView; }
    CWnd* GetActiveView() override { return activeView; }
    void InstrumentAddedFromQuickDialog(const Asset& /*a_asset*/) override
    {
        Note("InstrumentAddedFromQuickDialog");
    }
    void WindowResized(ModuleWndBase* /*a_window*/) override { Note("WindowResized"); }
    void AddOperationsToDoToProgress(unsigned int a_count) override
    {
        Note("AddOperationsToDoToProgress " + std::to_string(a_count));
    }
    void SetOperationsDidToProgress(unsigned int a_count) override
    {
        Note("SetOperationsDidToProgress " + std::to_string(a_count));
    }
    bool WindowsFollowActiveView() override { return windowsFollowActiveView; }
    bool IsDesktopChanging() override { return desktopChanging; }
    bool IsWindowInView(KalventoWindow* /*a_window*/) override { return windowInView; }
    void DesktopChanged() override { Note("DesktopChanged"); }
    void ShowContextMenu(IKalventoContextMenu* /*a_menu*/, CPoint /*a_point*/, CWnd* /*a_parent*/) override
    {
        Note("ShowContextMenu");
    }
    void ShowNotificationMessage(std::wstring_view a_text) override
    {
        Note("ShowNotificationMessage", std::wstring(a_text));
    }
    void PostToMainThread(std::function<void()> a_function) override
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(a_function));
    }
    void RequestExit(int a_exitCode) override { Note("RequestExit " + std::to_string(a_exitCode)); }

    /// Calls what was posted, and what that posts, on the calling thread.
    void RunPosted()
    {
        for (;;) {
            std::vector<std::function<void()>> posted;
            {
                const std::lock_guard lock(m_mutex);
                posted.swap(m_posted);
            }
            if (posted.empty())
                return;
            for (const auto& function : posted)
                function();
        }
    }

protected:
    void Note(std::string a_call)
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(std::move(a_call));
    }
    void Note(std::string a_call, std::wstring a_text)
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(std::move(a_call));
        m_texts.push_back(std::move(a_text));
    }

private:
    mutable std::mutex m_mutex; // providers call from their own threads
    std::vector<std::string> m_calls;
    std::vector<std::wstring> m_texts;
    std::vector<std::function<void()>> m_posted;
};
