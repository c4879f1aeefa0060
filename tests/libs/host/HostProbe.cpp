#include "host/Host.h"

#include "host/IHostView.h"
#include "platform/CodePage.h"
#include "platform/Descriptors.h"
#include "platform/Interruption.h"
#include "settings/KalventoPaths.h"
#include "support/Testing.h"

#include <iostream>
#include <unistd.h>

// A host's program for a test: host_probe FOLDER [RETRY]. Prints its process's number and what became of the plug-ins; the
// provider of the plug-in "Modules" hangs. SIGTERM ends it.
int main(int a_count, char** a_arguments)
{
    const auto name = [](const auto& a_report) { return CodePage::WideToUtf8(a_report.name); };
    KalventoPaths::Initialize(L"KalventoHostTest");
    kalvento::host::HostOptions options;
    options.pluginFolder = std::filesystem::path(a_arguments[1]).wstring();
    options.retry.assign(a_arguments + 2, a_arguments + a_count);
    options.memoryFolder = options.pluginFolder + L"/memory";
    options.callDeadline = std::chrono::milliseconds(100);
    options.pluginOptions["Modules"]["behaviour"] = "hang in provider";
    options.pluginOptions["Modules"]["name"] = "B";
    class View : public kalvento::host::IHostView {
    } view;
    kalvento::host::Host host(view, std::move(options));
    const kalvento::internal::Interruption interruption;
    std::cout << ::getpid() << std::endl;
    std::thread([&] {
        kalvento::internal::Descriptors::Awaited signal{interruption.GetFd()};
        kalvento::internal::Descriptors::WaitForAny({&signal, 1}, std::nullopt);
        host.RequestEnd(0);
    }).detach();
    host.Start();
    for (const auto& report : host.GetReports())
        if (report.state == kalvento::host::EPluginStateRunning)
            std::cout << name(report) << " runs\n";
        else
            std::cout << name(report) << ", " << CodePage::WideToUtf8(report.phase + L": " + report.reason)
                      << '\n';
    std::cout.flush();
    std::_Exit(0); // with the thread still waiting
}
