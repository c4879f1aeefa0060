// A plug-in with a provider and a consumer that note what is done with them, and that misbehave as the options say.
#include "contract_kit/TestProvider.h"
#include "libs/host/plugins/Recorder.h"
#include "modules/IAppMediator.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "settings/Settings.h"
#include "support/IdleConsumer.h"
#include "velo/ConverterMultiByteToWideChar.h"

#include <bit>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

struct Task {
    Recorder* recorder = nullptr;
    std::string behaviour;
};

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
            m_task.recorder->Hang();
        return m_task.behaviour != "refuse in " + m_kind;
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
    std::thread m_asking;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    const std::uint64_t address = a_options["recorder"];
    const std::wstring behaviour = a_options["behaviour"];
    const std::wstring name = a_options["name"];
    const Task task{std::bit_cast<Recorder*>(address), {behaviour.begin(), behaviour.end()}};
    a_registry.AddProvider(std::make_unique<Noting<TestProvider>>(name + L"P", "provider", task));
    if (task.behaviour == "throw in create")
        throw std::runtime_error("no keys");
    if (task.behaviour == "hang in create")
        task.recorder->Hang();
    if (task.behaviour == "add nothing")
        a_registry.AddConsumer(nullptr);
    a_registry.AddConsumer(std::make_unique<Noting<IdleConsumer>>(name + L"C", "consumer", task));
}

} // namespace

KALVENTO_PLUGIN(TEST_PLUGIN_NAME, "1.5", &CreateModules)
