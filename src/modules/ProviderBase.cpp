#include "modules/ProviderBase.h"

#include "assets/AssetsGroup.h"
#include "modules/IAppMediator.h"

#include <utility>

ProviderBase::ProviderBase(EGenericModule a_moduleKind, std::wstring a_name)
    : PluginBase(a_moduleKind, std::move(a_name), {})
{}

std::optional<AssetsGroup> ProviderBase::GetAssetsGroupForAssetsGroupId(const AssetsGroupId& /*a_groupId*/)
{
    return std::nullopt;
}

bool ProviderBase::Init()
{
    m_pathManager.InitPaths(GetName());
    return true;
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
