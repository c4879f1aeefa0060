#include "host/IHostView.h"
#include "host/IPluginCalls.h"
#include "host/MainThreadExecutor.h"
#include "host/ModuleDirectory.h"
#include "host/Plugin.h"
#include "host/TrialText.h"
#include "host/WindowlessMediator.h"
#include "modules/PluginBase.h"
#include "platform/Descriptors.h"
#include "platform/ModulePath.h"
#include "platform/ProcessTraces.h"
#include "platform/RunProgram.h"
#include "platform/StandardStreams.h"
#include "settings/KalventoPaths.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

// Tries one plug-in for a host, which waits for the answer and outlives whatever the plug-in does here. Started by the
// host only.

namespace {

using namespace kalvento::host;
namespace ProcessTraces = kalvento::internal::ProcessTraces;

constexpr int S_exitNoTask = 64;
// A thread that was joined may still be on the system's list for a moment.
constexpr std::chrono::seconds S_patience(1);
constexpr std::chrono::milliseconds S_round(5);

struct View : IHostView {};

class Teller : public IPluginCalls {
public:
    void Enter(const PluginCall& a_call) override { kalvento::internal::WriteAnswer(TrialCallText(a_call)); }
    void Leave() override {}
};

bool IsBackTo(std::size_t a_threads)
{
    const auto deadline = std::chrono::steady_clock::now() + S_patience;
    while (ProcessTraces::CountThreads() > a_threads && std::chrono::steady_clock::now() < deadline)
        kalvento::internal::Descriptors::WaitForAny({}, std::chrono::steady_clock::now() + S_round);
    return ProcessTraces::CountThreads() <= a_threads;
}

PluginReport Try(const TrialTask& a_task)
{
    std::size_t threads = ProcessTraces::CountThreads();
#if defined(__SANITIZE_THREAD__)
    ++threads; // the sanitizer's own, which begins with the first that a plug-in starts
#endif
    View view;
    const auto executor = std::make_shared<MainThreadExecutor>();
    const auto directory = std::make_shared<ModuleDirectory>();
    WindowlessMediator mediator(view, executor, directory);
    PluginBase::Init(&mediator);
    // Not destroyed where a thread is left: it would run in code that isn't there any more.
    auto* const plugin = new Plugin(a_task.plugin, std::make_shared<HostOptions>(a_task.options), directory,
                                    std::make_shared<Teller>());
    plugin->Load();
    plugin->MakeModules();
    plugin->DestroyConsumers();
    plugin->DestroyProviders();
    executor->Close(); // what waits there is the plug-in's code
    PluginReport report = plugin->GetReport();
    const bool isAlone = IsBackTo(threads);
    if (!isAlone && report.state == EPluginStateRunning) {
        report.state = EPluginStateFailed;
        report.phase = L"koniec próby";
        report.reason = L"zostawia po sobie wątek";
    }
    if (isAlone)
        delete plugin;
    PluginBase::Init(nullptr);
    return report;
}

bool AreStillOpen(const ProcessTraces::OpenFiles& a_files)
{
    const ProcessTraces::OpenFiles now = ProcessTraces::GetOpenFiles();
    return std::ranges::all_of(a_files, [&](const auto& file) {
        const auto found = now.find(file.first);
        return found != now.end() && found->second == file.second;
    });
}

} // namespace

int main()
{
    if (!kalvento::internal::EndWithParent())
        return S_exitNoTask;
    kalvento::internal::StandardStreams::LetWritesFail();
    const std::string text{std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    const auto task = ReadTrialTask(text);
    if (!task || task->plugin.empty())
        return S_exitNoTask;
    ModulePath::SetProgram(task->program);
    KalventoPaths::Initialize(task->name);

    const ProcessTraces::OpenFiles files = ProcessTraces::GetOpenFiles();
    const PluginReport report = Try(*task);
    // At once: what the plug-in has registered for the end of the process may be unloaded by now.
    if (!AreStillOpen(files) || !kalvento::internal::WriteAnswer(TrialReportText(report)))
        std::_Exit(S_exitDescriptorsLost);
    std::_Exit(EXIT_SUCCESS);
}
