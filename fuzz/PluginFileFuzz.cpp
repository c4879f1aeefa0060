#include "host/HostOptions.h"
#include "host/PluginTrial.h"
#include "host/TrialText.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

using namespace kalvento::host;

namespace {

// What reads the two programs' texts must take any bytes; what it took says the same again.
void ReadTexts(std::string_view a_bytes)
{
    const TrialAnswer answer = ReadTrialAnswer(a_bytes);
    if (answer.report &&
        ReadTrialAnswer(TrialReportText(*answer.report)).report->reason != answer.report->reason)
        std::abort();
    if (const auto task = ReadTrialTask(a_bytes);
        task && ReadTrialTask(TrialTaskText(*task))->plugin != task->plugin)
        std::abort();
}

} // namespace

// Whatever lies in the folder of plug-ins, its trial ends with a report that says why, and this process goes on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    static const std::filesystem::path folder = [] {
        KalventoPaths::Initialize(L"KalventoFuzz");
        std::string name = (std::filesystem::temp_directory_path() / "kalvento-fuzz-XXXXXX").string();
        return std::filesystem::path(::mkdtemp(name.data()));
    }();
    const std::string_view bytes(reinterpret_cast<const char*>(a_data), a_size);
    ReadTexts(bytes);
    // A process for each input is slow: only what the system's loader looks into gets one. A word stands for the mark of
    // libraries, so that no seed is a built file.
    constexpr std::string_view mark = "library ";
    if (!bytes.starts_with(mark))
        return 0;
    std::ofstream(folder / "plugin.so", std::ios::binary) << "\177ELF" << bytes.substr(mark.size());
    PluginTrial trial(std::make_shared<const HostOptions>(), folder / "trials.xml", [] { return true; });
    const PluginReport report = trial.Try(folder / "plugin.so", "");
    if (report.state != EPluginStateRunning && (report.phase.empty() || report.reason.empty()))
        std::abort();
    return 0;
}
