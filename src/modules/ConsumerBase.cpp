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

unsigned int ConsumerBase::AddInstrumentFromQuickDialog(HWND a_window, const Asset& a_asset)
{
    const unsigned int added = AddInstrument(a_window, a_asset);
    if (added != 0)
        Sm_pMediator->InstrumentAddedFromQuickDialog(a_asset);
    return added;
}

CCmdTarget* ConsumerBase::GetCmdTarger() const
{
    // The host looks the consumer up by its address, and a receiver of its commands may change it.
    return Sm_pMediator->GetCmdTarget(const_cast<ConsumerBase*>(this));
}
