#include "host/Host.h"
#include "host/HostOptions.h"
#include "host/IHostView.h"
#include "host/PluginReport.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "support/Testing.h"

// The program that KillTest kills: saving_host FOLDER DESCRIPTOR NUMBER. Saves in the folder, beginning with the
// number, and writes to the descriptor what it has saved. Doesn't end by itself.
int main(int a_count, char** a_arguments)
{
    if (a_count != 4)
        return 64;
    KalventoPaths::Initialize(L"Kalvento");
    kalvento::host::HostOptions options;
    options.pluginFolder = std::filesystem::path(KALVENTO_SAVING_PLUGINS).wstring();
    options.only = {"saving_modules"}; // even though it was killed in the plug-in's code
    Settings& saving = options.pluginOptions["saving_modules"];
    saving["Folder"] = std::filesystem::path(a_arguments[1]).wstring();
    saving["Reports"] = std::stoi(a_arguments[2]);
    saving["First"] = static_cast<unsigned int>(std::stoul(a_arguments[3]));
    class View : public kalvento::host::IHostView {
    } view;
    kalvento::host::Host host(view, std::move(options));
    host.Start();
    for (const auto& report : host.GetReports())
        if (report.state != kalvento::host::EPluginStateRunning)
            return 1;
    return host.Run();
}
