#include "platform/WidePath.h"
#include "settings/Settings.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

// Whatever is loaded must be saved, and what was saved must load as the same tree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    static const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kalvento-fuzz-" + std::to_string(::getpid()) + ".xml");
    static const std::wstring widePath = WidePath::ToWide(path);

    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        std::abort();
    std::fwrite(a_data, 1, a_size, file);
    std::fclose(file);

    Settings tree;
    if (!tree.LoadFromFile(widePath, "R"))
        return 0;
    Settings again;
    if (!tree.SaveToFile(widePath, "R") || !again.LoadFromFile(widePath, "R") ||
        again.ConvertToString() != tree.ConvertToString())
        std::abort();
    return 0;
}
