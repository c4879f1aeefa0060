#include "settings/Settings.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// Whatever is read must come back as the same text, and reading it again must give the same tree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    Settings tree;
    if (!tree.ConvertFromString({reinterpret_cast<const char*>(a_data), a_size}))
        return 0;
    const std::string text = tree.ConvertToString();
    Settings again;
    if (text.empty() || !again.ConvertFromString(text) || again.ConvertToString() != text)
        std::abort();
    return 0;
}
