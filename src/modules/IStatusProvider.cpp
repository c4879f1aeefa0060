#include "modules/IStatusProvider.h"

IStatusProvider::~IStatusProvider() = default;

std::wstring IStatusProvider::GetAdditionalStatusLabel() const
{
    return {};
}

void IStatusProvider::ProcessStatusDoubleClick(CWnd* /*a_statusBar*/) {}

void IStatusProvider::ProcessStatusRightClick(CWnd* /*a_statusBar*/) {}
