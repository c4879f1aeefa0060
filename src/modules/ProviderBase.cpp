#include "modules/ProviderBase.h"

#include "assets/AssetsGroup.h"
#include "modules/IAppMediator.h"

#include <utility>

ProviderBase::ProviderBase(EGenericModule a_moduleKind, std::wstring a_name)
    : PluginBase(a_moduleKind, std::move(a_name), {})
{}

bool ProviderBase::SaveObjectAvailable() const
{
    return false;
}

bool ProviderBase::SaveWindowToFile(HWND /*a_window*/, const wchar_t* /*a_path*/, int /*a_mode*/)
{
    return true;
}

void ProviderBase::SerialiseState(Settings& /*a_settings*/) const {}

void ProviderBase::UnserialiseState(const Settings& /*a_settings*/) {}

void ProviderBase::PostUnserialisePanelState(const Settings& /*a_settings*/, CWnd* /*a_panel*/) {}

void ProviderBase::EmptySessionNotification(CWnd* /*a_panel*/) {}

HICON ProviderBase::GetTitleBarIconHandle()
{
    return nullptr;
}

std::optional<AssetsGroup> ProviderBase::GetAssetsGroupForAssetsGroupId(const AssetsGroupId& /*a_groupId*/)
{
    return std::nullopt;
}

bool ProviderBase::Init()
{
    m_pathManager.InitPaths(GetName());
    return true;
}

void ProviderBase::SetAuthorizationData(std::string_view /*a_login*/, std::string_view /*a_password*/) {}

void ProviderBase::SetAuthorizationToken(std::string_view /*a_token*/) {}

bool ProviderBase::ShowLoginDlg(CWnd* /*a_parent*/)
{
    return true;
}

void ProviderBase::Disconnect(bool /*a_forget*/) {}

std::wstring ProviderBase::GetOperationFilePath(const std::string& a_symbol) const
{
    return m_pathManager.GetOperationFilePath(a_symbol);
}

std::wstring ProviderBase::GetHistorySymbolPath(const std::string& a_symbol) const
{
    return m_pathManager.GetHistorySymbolPath(a_symbol);
}

void ProviderBase::AssetsChanged()
{
    // A running provider implies a mediator, here and below.
    if (IsRunning())
        Sm_pMediator->AssetsChanged(this);
}

void ProviderBase::NotifyChangeConnectionStatus()
{
    if (IsRunning())
        Sm_pMediator->NotifyChangeConnectionStatus();
}

void ProviderBase::ShowAdditionalInfo(std::wstring_view a_text)
{
    if (!IsRunning() || a_text.empty())
        return;

    std::wstring message = GetName() + L":\n\n";
    message += a_text;
    if (message.back() != L'.' && message.back() != L'\n')
        message += L'.';
    ShowMessage(message);
}

void ProviderBase::AddOperationsToDoToProgress(unsigned int a_count)
{
    // Also after StopWork: a shutdown announces its work, and drops the reports of it.
    if (IsAppMediatorValid())
        Sm_pMediator->AddOperationsToDoToProgress(a_count);
}

void ProviderBase::SetOperationsDidToProgress(unsigned int a_count)
{
    if (IsRunning() && IsAppMediatorValid())
        Sm_pMediator->SetOperationsDidToProgress(a_count);
}
