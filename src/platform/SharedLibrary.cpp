#include "platform/SharedLibrary.h"

#include <dlfcn.h>

#include <utility>

namespace kalvento::internal {

std::string SharedLibrary::Load(const std::filesystem::path& a_path)
{
    m_handle = ::dlopen(a_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_handle != nullptr)
        return {};
    const char* const told = ::dlerror();
    return told != nullptr ? told : "?";
}

void* SharedLibrary::Find(const char* a_symbol) const
{
    return ::dlsym(m_handle, a_symbol);
}

void SharedLibrary::Unload()
{
    if (m_handle != nullptr)
        ::dlclose(std::exchange(m_handle, nullptr));
}

} // namespace kalvento::internal
