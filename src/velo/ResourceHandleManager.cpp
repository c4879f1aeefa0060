#include "velo/ResourceHandleManager.h"

#include <utility>

namespace {

thread_local HINSTANCE S_current = nullptr;

} // namespace

ResourceHandleManager::ResourceHandleManager(HINSTANCE a_module)
    : m_previous(std::exchange(S_current, a_module))
{}

ResourceHandleManager::~ResourceHandleManager()
{
    S_current = m_previous;
}

HINSTANCE ResourceHandleManager::GetCurrent()
{
    return S_current;
}
