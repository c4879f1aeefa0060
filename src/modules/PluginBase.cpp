#include "modules/PluginBase.h"

#include "modules/IAppMediator.h"
#include "platform/CodePage.h"
#include "platform/ThreadId.h"
#include "time/KalventoException.h"

#include <utility>

IAppMediator* PluginBase::Sm_pMediator = nullptr;

PluginBase::PluginBase(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension)
    : PluginBase(a_moduleKind, std::move(a_name), std::move(a_stateFileExtension), {}, {})
{}

PluginBase::PluginBase(EGenericModule a_moduleKind, std::wstring a_name, std::wstring a_stateFileExtension,
                       std::wstring a_stateLoadFileFilter, std::wstring a_stateSaveFileFilter)
    : IGenericModule(a_moduleKind, std::move(a_name), std::move(a_stateFileExtension),
                     std::move(a_stateLoadFileFilter), std::move(a_stateSaveFileFilter))
{}

void PluginBase::SetDefaultStyle(std::shared_ptr<StyleBase> /*a_style*/) {}

void PluginBase::StopWork()
{
    m_isRunning = false;
    OnStopWork();
}

std::uint32_t PluginBase::GetMainThreadId()
{
    return IsAppMediatorValid() ? Sm_pMediator->GetMainThreadId() : 0;
}

void PluginBase::CheckMainThreadCondition()
{
    if (GetMainThreadId() != GetCurrentThreadId())
        throw KalventoException("PluginBase::CheckMainThreadCondition", __LINE__,
                                "Wywołanie operacji z wątku który nie jest wątkiem głównym"_cp1250);
}

void PluginBase::ShowMessage(std::wstring_view a_text)
{
    if (IsAppMediatorValid())
        Sm_pMediator->ShowMessage(a_text);
}

int PluginBase::ShowMessage(std::wstring_view a_caption, std::wstring_view a_text, unsigned int a_flags)
{
    return IsAppMediatorValid() ? Sm_pMediator->ShowMessage(a_caption, a_text, a_flags) : -1;
}

void PluginBase::ShowNotificationMessage(std::wstring_view a_text)
{
    if (IsAppMediatorValid())
        Sm_pMediator->ShowNotificationMessage(a_text);
}
