#include "modules/IAppMediator.h"

#include "dragdrop/DragDropManager.h"
#include "platform/ThreadId.h"

#include <utility>

IAppMediator::IAppMediator()
    : m_dragDropManager(std::make_unique<DragDropManager>()), m_mainThreadId(GetCurrentThreadId())
{}

IAppMediator::~IAppMediator() = default;

void IAppMediator::StopWork()
{
    for (const auto& process : m_processes)
        VeloTools::Process::CloseProcess(process);
    m_processes.clear();
}

bool IAppMediator::IsDroppingInProgress() const
{
    return m_dragDropManager && m_dragDropManager->IsDropInProgress();
}

bool IAppMediator::OpenProcess(std::wstring_view a_program, std::wstring_view a_arguments, bool a_keep)
{
    auto process = VeloTools::Process::OpenProcess(a_program, a_arguments);
    if (process.GetProcessHandle() == nullptr || process.GetThreadHandle() == nullptr)
        return false;

    if (a_keep)
        m_processes.push_back(std::move(process));
    else
        process.CloseHandles();
    return true;
}
