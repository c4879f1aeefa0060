#pragma once

#include "host/HostOptions.h"
#include "host/IPluginCalls.h"
#include "host/PluginReport.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// What the host and the program that tries plug-ins tell each other.
namespace kalvento::host {

/// What is to be tried, and in whose stead.
struct TrialTask {
    std::filesystem::path program; ///< Of the host: its folder tree is the plug-in's.
    std::wstring name;             ///< What the host's KalventoPaths were initialised with.
    std::filesystem::path plugin;
    HostOptions options; ///< pluginOptions only.
};

/// Exit code of the trying program where the plug-in has closed files that aren't its own, such as the answer's.
constexpr int S_exitDescriptorsLost = 71;

std::string TrialTaskText(const TrialTask& a_task);
/// Empty for what can't be read.
std::optional<TrialTask> ReadTrialTask(std::string_view a_text);

/// The answer: the calls one after the other as they begin, and the report once all is over and nothing was left behind.
std::string TrialCallText(const PluginCall& a_call);
std::string TrialReportText(const PluginReport& a_report);

struct TrialAnswer {
    std::wstring plugin;                ///< Its name, as far as it is known.
    std::wstring phase;                 ///< The last call that began.
    std::optional<PluginReport> report; ///< Empty where it hasn't come to its end. Its path is empty.
};
/// Whatever the bytes are: what can't be read is left out.
TrialAnswer ReadTrialAnswer(std::string_view a_text);

} // namespace kalvento::host
