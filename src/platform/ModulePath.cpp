#include "platform/ModulePath.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>

#include <bit>
#include <system_error>
#include <utility>

namespace ModulePath {

namespace {

std::filesystem::path& Program()
{
    static std::filesystem::path S_program; // empty: the real one
    return S_program;
}

} // namespace

std::filesystem::path GetLibrary()
{
    return GetFile(reinterpret_cast<HINSTANCE>(&Program()));
}

void SetProgram(std::filesystem::path a_file)
{
    Program() = std::move(a_file);
}

std::filesystem::path GetFile(HINSTANCE a_module)
{
    std::error_code error;
    const auto executable = [&error] {
        return Program().empty() ? std::filesystem::read_symlink("/proc/self/exe", error) : Program();
    };
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

const void* GetBase(HINSTANCE a_module)
{
    // The executable's own headers lie inside it.
    const void* const inside =
        a_module != nullptr ? a_module : std::bit_cast<const void*>(::getauxval(AT_PHDR));
    Dl_info info{};
    return ::dladdr(inside, &info) == 0 ? nullptr : info.dli_fbase;
}

} // namespace ModulePath
