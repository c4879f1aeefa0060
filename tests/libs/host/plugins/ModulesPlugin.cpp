// A plug-in with a provider and a consumer that note what is done with them, and that misbehave as the options say.
#include "contract_kit/TestProvider.h"
#include "libs/host/plugins/Recorder.h"
#include "modules/IAppMediator.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "settings/Settings.h"
#include "support/IdleConsumer.h"
#include "velo/ConverterMultiByteToWideChar.h"

#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

struct Task {
    Recorder* recorder = nullptr;
    std::string behaviour;
};

void HangForEver()
{
    for (;;)
        ::pause();
}

// What only a trial survives.
void Misbehave(const std::string& a_behaviour)
{
    if (a_behaviour == "hang in create")
        HangForEver();
    if (a_behaviour == "exit in create")
        std::exit(0);
    if (a_behaviour == "crash in create")
        std::abort();
    if (a_behaviour == "close in create")
        ::close_range(0, ~0U, 0);
    if (a_behaviour == "leave a thread")
        std::thread(&HangForEver).detach();
}

/// A module that notes what is done with it. a_kind: provider or consumer.
template<class Base>
class Noting : public Base {
public:
    Noting(std::wstring a_name, std::string a_kind, Task a_task)
        : Base(std::move(a_name)), m_kind(std::move(a_kind)), m_task(std::move(a_task))
    {}
    ~Noting() override { Note("destroy"); }
    bool Init() override
    {
        const bool isProvider = m_kind == "provider";
        if (isProvider && m_task.behaviour == "ask main thread")
            Ask();
        if (!isProvider && m_task.behaviour == "ask at the end")
            m_asking = std::thread([this] { Ask(); });
        Note("init");
        if (m_task.behaviour == "throw in " + m_kind)
            throw std::runtime_error("no route");
        if (m_task.behaviour == "hang in " + m_kind)
            HangForEver();
        return m_task.behaviour != "refuse in " + m_kind;
    }
    void SerialiseState(Settings& a_settings) const override
    {
        if (m_task.behaviour == "keep state")
            a_settings["Runs"] = m_runs + 1;
    }
    void UnserialiseState(const Settings& a_settings) override
    {
        m_runs = a_settings["Runs"];
        Note("run " + std::to_string(m_runs + 1) + " of");
    }
    void OnStopWork() override
    {
        Note("stop");
        if (m_asking.joinable())
            m_asking.join();
        if (m_task.behaviour == "throw in stop")
            throw std::runtime_error("no way");
    }

private:
    void Note(const std::string& a_call) const
    {
        const std::wstring name = this->GetName();
        m_task.recorder->Note(a_call + ' ' + m_kind + ' ' + std::string(name.begin(), name.end()));
    }
    void Ask() const { m_task.recorder->Note("answer " + std::to_string(this->ShowMessage(L"?", L"?", 4))); }

    const std::string m_kind;
    const Task m_task;
    int m_runs = 0;
    std::thread m_asking;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    // In a trial the test's recorder is out of reach.
    static Recorder S_unread;
    const std::uint64_t address = a_options["recorder"];
    const bool isHere = static_cast<int>(a_options["process"]) == ::getpid();
    const std::wstring behaviour = a_options["behaviour"];
    const std::wstring name = a_options["name"];
    const Task task{isHere ? std::bit_cast<Recorder*>(address) : &S_unread,
                    {behaviour.begin(), behaviour.end()}};
    a_registry.AddProvider(std::make_unique<Noting<TestProvider>>(name + L"P", "provider", task));
    if (task.behaviour == "throw in create")
        throw std::runtime_error("no keys");
    Misbehave(task.behaviour);
    if (task.behaviour == "add nothing")
        a_registry.AddConsumer(nullptr);
    a_registry.AddConsumer(std::make_unique<Noting<IdleConsumer>>(name + L"C", "consumer", task));
}

} // namespace

KALVENTO_PLUGIN(TEST_PLUGIN_NAME, "1.5", &CreateModules)
