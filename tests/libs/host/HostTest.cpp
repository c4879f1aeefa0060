#include "host/Host.h"

#include "host/HostMediator.h"
#include "host/IHostView.h"
#include "host/MainThreadExecutor.h"
#include "libs/host/plugins/Recorder.h"
#include "modules/ConsumerBase.h"
#include "modules/ProviderBase.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <gmock/gmock.h>

#include <csignal>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kalvento::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string Narrow(const std::wstring& a_text)
{
    return WidePath::ToPath(a_text).native();
}

struct View : IHostView {
    int Ask(std::wstring_view, std::wstring_view, unsigned int a_flags) override
    {
        PluginBase::CheckMainThreadCondition();
        return static_cast<int>(a_flags) + 2;
    }
    void AssetsChanged(ProviderBase& a_provider) override { changed.push_back(Narrow(a_provider.GetName())); }
    void ConnectionStatusChanged() override { ++statusChanges; }
    void Progress(unsigned int a_done, unsigned int a_total) override { progress = {a_done, a_total}; }

    std::vector<std::string> changed;
    int statusChanges = 0;
    std::pair<unsigned int, unsigned int> progress;
};

class HostTest : public testing::Test {
protected:
    HostTest()
    {
        ::setenv("HOME", folder.GetPath().c_str(), 1); // where documents go
        KalventoPaths::Initialize(L"KalventoHostTest");
        options.pluginFolder = WidePath::ToWide(folder.GetPath());
        options.memoryFolder = options.pluginFolder + L"/memory";
        options.callDeadline = std::chrono::minutes(1);
    }

    /// Puts a plug-in of the tests into the folder under a name of its own.
    std::filesystem::path Put(const std::string& a_plugin, const std::string& a_name)
    {
        std::filesystem::copy_file(std::filesystem::path(KALVENTO_TEST_PLUGINS) / (a_plugin + ".so"),
                                   folder / a_name);
        return folder / a_name;
    }
    /// What the plug-in of that name is to do; its modules are a_module with P and C behind.
    void Tell(const std::string& a_plugin, const wchar_t* a_module, const std::string& a_behaviour = {})
    {
        Settings& told = options.pluginOptions[a_plugin];
        told["recorder"] = std::bit_cast<std::uint64_t>(&recorder);
        told["process"] = ::getpid();
        told["behaviour"] = a_behaviour;
        told["name"] = a_module;
    }
    /// Both, for one of the two plug-ins of the tests that have modules.
    std::filesystem::path Add(const std::string& a_plugin, const wchar_t* a_module,
                              const std::string& a_behaviour = {})
    {
        Tell(a_plugin, a_module, a_behaviour);
        return a_plugin == "Modules" ? Put("test_modules", "a.so") : Put("test_neighbours", "b.so");
    }
    Host& Start()
    {
        host.reset();
        host.emplace(view, options);
        host->Start();
        return *host;
    }
    static bool IsLoaded(const std::filesystem::path& a_file)
    {
        void* const library = ::dlopen(a_file.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (library != nullptr)
            ::dlclose(library);
        return library != nullptr;
    }

    TemporaryFolder folder;
    HostOptions options;
    View view;
    Recorder recorder;
    std::optional<Host> host;
};

TEST_F(HostTest, ModulesStartProvidersFirstAndEndInReverse)
{
    const auto first = Add("Modules", L"A");
    const auto second = Add("Neighbours", L"B", "throw in stop");
    Start();
    EXPECT_EQ(host->GetProviders().size(), 2U);
    EXPECT_EQ(host->GetMediator().GetProviderByName(L"BP"), host->GetProviders()[1]);
    EXPECT_EQ(host->GetMediator().GetModuleByName(L"AC"), host->GetConsumers()[0]);
    EXPECT_EQ(host->GetMediator().GetProviderByName(L"AC"), nullptr) << "a consumer";
    EXPECT_EQ(host->GetReports()[1].name, L"Neighbours");
    EXPECT_EQ(host->GetReports()[1].version, L"1.5");
    EXPECT_TRUE(IsLoaded(first));
    recorder.Note("end");
    host.reset();
    EXPECT_THAT(recorder.GetCalls(),
                ElementsAre("init provider AP", "init provider BP", "init consumer AC", "init consumer BC",
                            "end", "stop consumer BC", "stop consumer AC", "stop provider BP",
                            "stop provider AP", "destroy consumer BC", "destroy consumer AC",
                            "destroy provider BP", "destroy provider AP"));
    EXPECT_FALSE(PluginBase::IsAppMediatorValid());
    EXPECT_FALSE(IsLoaded(first));
    EXPECT_FALSE(IsLoaded(second));
}

struct Fault {
    const char* plugin; // file; a text that is no library where empty, half of one where "half", or a pipe
    const char* behaviour;
    EPluginState state;
    const char* phase;
    const char* reason; // part of it
};

class PluginFaultTest : public HostTest, public testing::WithParamInterface<Fault> {};

TEST_P(PluginFaultTest, IsReportedAndTheOthersRun)
{
    const Fault& fault = GetParam();
    const std::string plugin = fault.plugin;
    if (plugin.empty())
        std::ofstream(folder / "b.so") << "not a library";
    else if (plugin == "pipe")
        ASSERT_EQ(::mkfifo((folder / "b.so").c_str(), 0600), 0);
    else if (plugin == "half")
        std::filesystem::resize_file(Put("test_modules", "b.so"), 30000);
    else
        Put(plugin, "b.so");
    Put("test_neighbours", "c.so");
    Tell("Modules", L"B", fault.behaviour);
    Tell("Neighbours", L"C");

    if (std::string(fault.behaviour).starts_with("hang"))
        options.callDeadline = std::chrono::seconds(4); // long enough for the neighbour
    Start();
    ASSERT_EQ(host->GetReports().size(), 2U);
    const PluginReport& report = host->GetReports()[0];
    EXPECT_EQ(report.path, folder / "b.so");
    EXPECT_EQ(Narrow(report.name), plugin == "test_modules" ? "Modules" : "b");
    EXPECT_EQ(report.state, fault.state);
    EXPECT_EQ(Narrow(report.phase), fault.phase);
    EXPECT_THAT(Narrow(report.reason), HasSubstr(fault.reason));

    EXPECT_EQ(host->GetReports()[1].state, EPluginStateRunning);
    ASSERT_EQ(host->GetProviders().size(), 1U);
    EXPECT_EQ(host->GetProviders()[0]->GetName(), L"CP");
    EXPECT_EQ(host->GetMediator().GetModuleByName(L"BP"), nullptr);
    ASSERT_EQ(host->GetConsumers().size(), 1U);
    host.reset();
    EXPECT_TRUE(plugin == "pipe" || !IsLoaded(folder / "b.so")); // a pipe would wait for its writer
    EXPECT_FALSE(PluginBase::IsAppMediatorValid());
}

INSTANTIATE_TEST_SUITE_P(
    Faults, PluginFaultTest,
    testing::Values(
        Fault{"", "", EPluginStateRefused, "ładowanie", "nie można wczytać pliku: "},
        Fault{"test_dependent", "", EPluginStateRefused, "ładowanie",
              "brakuje biblioteki, której wtyczka używa: libkalvento_test_dependency.so"},
        Fault{"test_no_symbol", "", EPluginStateRefused, "ładowanie",
              "to nie jest wtyczka: brakuje symbolu KalventoPlugin"},
        Fault{"test_abi", "", EPluginStateRefused, "ładowanie",
              "wersja interfejsu wtyczki: 7, program ma 1; trzeba ją zbudować z tą wersją biblioteki"},
        Fault{"test_size", "", EPluginStateRefused, "ładowanie",
              "opis wtyczki ma bajtów: 8, w programie ma "},
        Fault{"test_build", "", EPluginStateRefused, "ładowanie", "wtyczka zbudowana inaczej: \"other\""},
        Fault{"test_modules", "throw in create", EPluginStateFailed, "tworzenie modułów", "wyjątek: no keys"},
        Fault{"test_modules", "add nothing", EPluginStateFailed, "tworzenie modułów", "pusty wskaźnik"},
        Fault{"test_modules", "throw in provider", EPluginStateFailed, "Init modułu BP", "wyjątek: no route"},
        Fault{"test_modules", "refuse in provider", EPluginStateFailed, "Init modułu BP", "odmówił"},
        Fault{"test_modules", "throw in consumer", EPluginStateFailed, "Init modułu BC", "wyjątek: no route"},
        Fault{"test_modules", "refuse in consumer", EPluginStateFailed, "Init modułu BC", "odmówił"},
        // By a signal, which a sanitizer turns into an end.
        Fault{"half", "", EPluginStateFailed, "ładowanie", "program"},
        Fault{"pipe", "", EPluginStateRefused, "ładowanie", "to nie jest zwykły plik"},
        Fault{"test_modules", "hang in create", EPluginStateFailed, "tworzenie modułów",
              "nie wraca od 4000 ms"},
        Fault{"test_modules", "exit in create", EPluginStateFailed, "tworzenie modułów",
              "kończy program, w którym działa (kod 0)"},
        Fault{"test_modules", "crash in create", EPluginStateFailed, "tworzenie modułów", "(sygnał 6)"},
        Fault{"test_modules", "close in create", EPluginStateFailed, "tworzenie modułów",
              "zamyka pliki, które do niej nie należą"},
        Fault{"test_modules", "leave a thread", EPluginStateFailed, "koniec próby",
              "zostawia po sobie wątek"}));

TEST_F(HostTest, ADroppedPluginsRunningModulesAreStopped)
{
    Add("Modules", L"A", "refuse in consumer");
    Start();
    EXPECT_THAT(recorder.GetCalls(), ElementsAre("init provider AP", "init consumer AC", "stop provider AP"));
}

TEST_F(HostTest, ANameIsGivenOnce)
{
    Add("Modules", L"A");
    Add("Neighbours", L"A");
    Start();
    EXPECT_EQ(host->GetReports()[0].state, EPluginStateRunning);
    EXPECT_EQ(host->GetReports()[1].state, EPluginStateFailed);
    EXPECT_THAT(Narrow(host->GetReports()[1].reason), HasSubstr("Jest już moduł o nazwie \"AP\""));
}

TEST_F(HostTest, OnlyWhatIsAskedForStarts)
{
    std::ofstream(folder / "c.so") << "not a library";
    Add("Modules", L"A");
    Add("Neighbours", L"B");
    struct Choice {
        std::vector<std::string> only;
        std::vector<std::pair<std::string, EPluginState>> reports;
    };
    const std::vector<Choice> choices = {
        {{"b"}, {{"Neighbours", EPluginStateRunning}}},
        {{"Neighbours", "a"}, {{"Modules", EPluginStateRunning}, {"Neighbours", EPluginStateRunning}}},
        {{"Neighbours"}, {{"Neighbours", EPluginStateRunning}}},
        {{"c"}, {{"c", EPluginStateRefused}}},
        // The file that can't be read could be the one.
        {{"Quotes"}, {{"c", EPluginStateRefused}, {"Quotes", EPluginStateMissing}}},
    };
    for (const Choice& choice : choices) {
        SCOPED_TRACE(choice.only.front());
        options.only = choice.only;
        Start();
        std::vector<std::pair<std::string, EPluginState>> reports;
        for (const PluginReport& report : host->GetReports())
            reports.emplace_back(Narrow(report.name), report.state);
        EXPECT_EQ(reports, choice.reports);
    }
}

TEST_F(HostTest, AFolderThatIsNotThereIsReported)
{
    options.pluginFolder = WidePath::ToWide(folder / "none");
    Start();
    ASSERT_EQ(host->GetReports().size(), 1U);
    EXPECT_EQ(host->GetReports()[0].state, EPluginStateMissing);
    EXPECT_EQ(host->GetReports()[0].path, folder / "none");
}

TEST_F(HostTest, InitMayAskTheUser)
{
    Add("Modules", L"A", "ask main thread");
    Start();
    EXPECT_THAT(recorder.GetCalls(), ElementsAre("answer 6", "init provider AP", "init consumer AC"));
}

// The consumer joins a thread that waits for an answer which nobody will give.
TEST_F(HostTest, AQuestionDoesNotHoldTheEndUp)
{
    Add("Modules", L"A", "ask at the end");
    Start();
    host->Stop();
    EXPECT_THAT(recorder.GetCalls(), testing::Contains(testing::AnyOf("answer -1", "answer 6")));
}

TEST_F(HostTest, WhatProvidersTellReachesTheViewOnceItIsServed)
{
    Add("Modules", L"A");
    Start();
    ProviderBase* const provider = host->GetProviders().at(0);
    provider->NotifyChangeConnectionStatus();
    provider->NotifyChangeConnectionStatus();
    provider->AssetsChanged();
    host->GetMediator().AssetsChanged(nullptr);
    provider->AddOperationsToDoToProgress(3);
    provider->AddOperationsToDoToProgress(2);
    provider->SetOperationsDidToProgress(4);
    EXPECT_EQ(view.statusChanges, 0);
    host->GetMediator().RequestExit(3);
    host->GetMediator().RequestExit(4);
    EXPECT_EQ(host->Run(), 3);
    EXPECT_EQ(view.statusChanges, 1);
    EXPECT_THAT(view.changed, ElementsAre("AP"));
    EXPECT_EQ(view.progress, std::pair(4U, 5U));

    provider->NotifyChangeConnectionStatus();
    host->GetExecutor().RunPending();
    EXPECT_EQ(view.statusChanges, 2) << "told anew after it was asked";
}

TEST_F(HostTest, AFileThatPassedIsNotTriedAgainUntilItChanges)
{
    const auto file = Add("Modules", L"A");
    Start();
    EXPECT_EQ(host->GetReports()[0].state, EPluginStateRunning);
    Tell("Modules", L"A", "exit in create");
    recorder.Note("told");
    options.only = {"none"}; // nothing is loaded here
    Start();
    EXPECT_EQ(host->GetReports()[0].state, EPluginStateMissing);
    std::filesystem::last_write_time(file, std::filesystem::file_time_type());
    Start();
    EXPECT_EQ(host->GetReports()[0].state, EPluginStateFailed);
}

TEST_F(HostTest, ModulesGetTheirStateOfTheLastRunBack)
{
    Add("Modules", L"A", "keep state");
    Start();
    host.reset();
    Start();
    host.reset();
    Start();
    EXPECT_THAT(recorder.GetCalls(), testing::Contains("run 2 of provider AP"));
    EXPECT_EQ(recorder.GetCalls().back(), "run 3 of consumer AC");
}

/// What a program around a host prints. Once a call is overdue the user ends it.
std::string RunProbe(const std::filesystem::path& a_folder, const std::string& a_retry)
{
    const std::string command =
        std::string(KALVENTO_HOST_PROBE) + " '" + a_folder.string() + "' " + a_retry + " 2>&1";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
    char line[1000];
    const int process = std::fgets(line, sizeof(line), output.get()) != nullptr ? std::atoi(line) : 0;
    std::string text;
    while (std::fgets(line, sizeof(line), output.get()) != nullptr) {
        text += line;
        if (process > 0 && text.find("Ctrl-C") != std::string::npos)
            ::kill(process, SIGTERM);
    }
    return text;
}

TEST_F(HostTest, ACallThatHangsIsNamedAndLeftOutNextTime)
{
    Add("Modules", L"A");
    const auto neighbours = Add("Neighbours", L"B");
    Start(); // both pass their trials
    host.reset();
    std::filesystem::rename(neighbours, folder / "later");
    const std::string hangs = "Wtyczka Modules, Init modułu BP: nie wraca od 100 ms; "
                              "program czeka na nią, Ctrl-C go kończy\n";
    EXPECT_EQ(RunProbe(folder.GetPath(), ""), hangs);
    EXPECT_EQ(RunProbe(folder.GetPath(), ""),
              "Modules, Init modułu BP: poprzednim razem nie wróciła z tego wywołania\n");
    EXPECT_EQ(RunProbe(folder.GetPath(), "a"), hangs) << "asked for";
    std::filesystem::rename(folder / "later", folder / "a.so");
    EXPECT_THAT(RunProbe(folder.GetPath(), ""), testing::Not(HasSubstr("poprzednim razem")))
        << "another file";
}

} // namespace
} // namespace kalvento::host
