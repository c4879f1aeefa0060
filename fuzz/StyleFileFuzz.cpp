#include "settings/Settings.h"
#include "styles/StyleTextField.h"
#include "styles/StylesManager.h"
#include "styles/StylesTools.h"
#include "time/KalventoException.h"
#include "velo/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace {

std::string TextOf(const StyleBase& a_style)
{
    Settings node;
    a_style.Serialize(node, true);
    return node.ConvertToString();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*a_count*/, char*** /*a_arguments*/)
{
    // Every refusal is a line of the log; the terminal is no place for millions of them.
    VeloTools::Log::Instance().SetLogFolder(std::filesystem::temp_directory_path() / "kalvento_fuzz_log");
    StylesManager::Instance().RegisterInstanceCreator(L"StyleTextField", StyleTextField::Creator());
    return 0;
}

// A file is a style or refused; what is read from it is written and read back as the same, and a window's style takes all
// of it over.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    Settings file;
    if (!file.LoadFromBytes({reinterpret_cast<const char*>(a_data), a_size}, "style", "Style").empty())
        return 0;
    std::shared_ptr<StyleBase> style;
    try {
        style = StylesTools::LoadStyle(file);
    } catch (const KalventoException&) {
        return 0; // a type that differs from the registered name in what CP1250 lacks
    }
    const auto read = std::dynamic_pointer_cast<StyleTextField>(style);
    if (!read)
        return 0;
    Settings stored;
    read->Serialize(stored, true);
    StyleTextField again;
    again.Unserialize(stored);
    if (TextOf(again) != TextOf(*read) || read->GetDisplayFontHeight() <= 0)
        std::abort();

    read->ResetModFlags();
    const auto window = std::make_shared<StyleTextField>();
    window->CopySettingsFromSelectedStyle(read);
    if (TextOf(*window) != TextOf(*read))
        std::abort();
    return 0;
}
