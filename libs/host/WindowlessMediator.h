#pragma once

#include "host/HostMediator.h"
#include "modules/IGeneralSettings.h"

namespace kalvento::host {

/// The mediator of a host without windows: asked about them, it answers that there are none; what it is told about them
/// it ignores.
class WindowlessMediator final : public HostMediator {
public:
    using HostMediator::HostMediator;

    KalventoWindow* GetActiveWindow() override { return nullptr; }
    CWnd* GetActiveView() override { return nullptr; }
    bool IsActiveView(CWnd* /*a_window*/) override { return false; }
    bool IsWindowInView(KalventoWindow* /*a_window*/) override { return false; }
    bool WindowsFollowActiveView() override { return false; }
    bool IsDesktopChanging() override { return false; }
    bool TemplateExists(IGenericModule* /*a_module*/, const std::wstring& /*a_guid*/) override
    {
        return false;
    }
    std::shared_ptr<Settings> GetWindowTemplate(const ModuleWndBase* /*a_window*/) override
    {
        return nullptr;
    }
    IChooseAssetDlgFactory* GetChooseAssetDlgFactory() override { return nullptr; }
    CCmdTarget* GetCmdTarget(ConsumerBase* /*a_consumer*/) override { return nullptr; }
    COLORREF GetSkinColor(int /*a_index*/) override { return 0; } ///< Black.
    const IGeneralSettings& GetGeneralSettings() override { return m_generalSettings; }

    void WindowActivationChanged(KalventoWindow* /*a_window*/, bool /*a_active*/,
                                 bool /*a_byDeactivation*/) override
    {}
    void WindowResized(ModuleWndBase* /*a_window*/) override {}
    void DesktopChanged() override {}
    void RefreshRibbonContext() override {}
    void RefreshRibbonContextCaption() override {}
    void InstrumentAddedFromQuickDialog(const Asset& /*a_asset*/) override {}
    void ShowContextMenu(IKalventoContextMenu* /*a_menu*/, CPoint /*a_point*/, CWnd* /*a_parent*/) override {}

private:
    struct GeneralSettings : IGeneralSettings {
        int GetWindowMargin() const override { return 0; }
        std::uint32_t GetFlashTime() const override { return 0; }
    };
    const GeneralSettings m_generalSettings{};
};

} // namespace kalvento::host
