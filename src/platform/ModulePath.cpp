#include "platform/ModulePath.h"

#include <dlfcn.h>
#include <link.h>

#include <system_error>

namespace ModulePath {

std::filesystem::path GetFile(HINSTANCE a_module)
{
    std::error_code error;
    const auto executable = [&error] { return std::filesystem::read_symlink("/proc/self/exe", error); };
    if (a_module == nullptr)
        return executable();
    Dl_info info{};
    link_map* map = nullptr;
    if (::dladdr1(a_module, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr)
        return {};
    // For the executable one source gives no name, the other the name that the process was started by.
    if (map->l_name == nullptr || map->l_name[0] == '\0')
        return executable();
    const std::filesystem::path file = std::filesystem::canonical(map->l_name, error);
    return error ? std::filesystem::path(map->l_name) : file;
}

} // namespace ModulePath
