#include "host/ModuleStates.h"
#include "support/IdleConsumer.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

struct Module : IdleConsumer {
    Module() : IdleConsumer(L"M") {}
    void SerialiseState(Settings& a_settings) const override { a_settings["Value"] = value; }
    void UnserialiseState(const Settings& a_settings) override { value = a_settings["Value"]; }
    int value = 0;
};

} // namespace

// Whatever the file holds, it is read or kept aside; and what was saved over it comes back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    static const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("kalvento-fuzz-states-" + std::to_string(::getpid()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    const std::filesystem::path file = folder / "states.xml";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(a_data), static_cast<std::streamsize>(a_size));

    kalvento::host::ModuleStates states(file);
    Module module;
    states.GiveBack(module);
    const int before = module.value;
    module.value = before ^ 1;
    states.Take(module);
    if (!states.Save())
        return 0;
    Module again;
    kalvento::host::ModuleStates(file).GiveBack(again);
    if (again.value != module.value && again.value != before)
        std::abort();
    return 0;
}
