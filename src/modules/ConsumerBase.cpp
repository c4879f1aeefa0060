#include "modules/ConsumerBase.h"

#include "modules/IAppMediator.h"

#include <utility>

ConsumerBase::ConsumerBase(EGenericModule a_moduleKind, std::wstring a_name,
                           std::wstring a_stateFileExtension)
    : PluginBase(a_moduleKind, std::move(a_name), std::move(a_stateFileExtension))
{}

ConsumerBase::ConsumerBase(EGenericModule a_moduleKind, std::wstring a_name,
                           std::wstring a_stateFileExtension, std::wstring a_stateLoadFileFilter,
                           std::wstring a_stateSaveFileFilter)
    : PluginBase(a_moduleKind, std::move(a_name), std::move(a_stateFileExtension),
                 std::move(a_stateLoadFileFilter), std::move(a_stateSaveFileFilter))
{}

bool ConsumerBase::SaveObjectAvailable() const
{
    return true;
}

bool ConsumerBase::SaveTemplateAvailable() const
{
    return true;
}

bool ConsumerBase::SaveWindowToFile(HWND /*a_window*/, const wchar_t* /*a_path*/, int /*a_mode*/)
{
    return false;
}

void ConsumerBase::SerialiseState(Settings& /*a_settings*/) const {}

void ConsumerBase::UnserialiseState(const Settings& /*a_settings*/) {}

void ConsumerBase::PostUnserialisePanelState(const Settings& /*a_settings*/, CWnd* /*a_panel*/) {}

void ConsumerBase::EmptySessionNotification(CWnd* /*a_panel*/) {}

bool ConsumerBase::Init()
{
    return true;
}

unsigned int ConsumerBase::AddInstrument(HWND /*a_window*/, const Asset& /*a_asset*/)
{
    return 0;
}

unsigned int ConsumerBase::AddInstrumentFromQuickDialog(HWND a_window, const Asset& a_asset)
{
    const unsigned int added = AddInstrument(a_window, a_asset);
    if (added != 0)
        Sm_pMediator->InstrumentAddedFromQuickDialog(a_asset);
    return added;
}

void ConsumerBase::OnGlobalSettingsChanged() {}

const std::wstring& ConsumerBase::GetConsumerNewWindowNameTemplate() const
{
    return GetName();
}

bool ConsumerBase::WillHandleTheFile(std::wstring_view /*a_path*/) const
{
    return false;
}

void ConsumerBase::OnPostMainWindowCreate(CWnd* /*a_mainWindow*/) {}

void ConsumerBase::OnSkinChanged(ChangeSkinMode /*a_mode*/) {}

void ConsumerBase::OnTurnOffAllTools() {}

Gdiplus::Image* ConsumerBase::GetInfoImage() const
{
    return nullptr;
}

void ConsumerBase::FillSettingsControls(CXTPTaskPanel& /*a_panel*/, CXTPPropertyGrid& /*a_grid*/) {}

void ConsumerBase::ApplySettingsFromControls(const CXTPPropertyGrid& /*a_grid*/) {}

void ConsumerBase::RestoreDefaultSettings() {}

CCmdTarget* ConsumerBase::GetCmdTarger() const
{
    // The host looks the consumer up by its address, and a receiver of its commands may change it.
    return Sm_pMediator->GetCmdTarget(const_cast<ConsumerBase*>(this));
}
