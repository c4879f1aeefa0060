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

    bool Init(const std::string& a_module, const std::string& a_place) const
    {
        recorder->Note("init " + a_module);
        if (behaviour == "throw in " + a_place)
            throw std::runtime_error("no route");
        if (behaviour == "hang in " + a_place)
            recorder->Hang();
        return behaviour != "refuse in " + a_place;
    }
};

class Provider : public TestProvider {
public:
    Provider(std::wstring a_name, Task a_task) : TestProvider(std::move(a_name)), m_task(std::move(a_task)) {}
    ~Provider() override { m_task.recorder->Note("destroy provider " + Name()); }
    bool Init() override
    {
        if (m_task.behaviour == "ask main thread")
            m_task.recorder->Note("answer " + std::to_string(ShowMessage(L"?", L"?", 4)));
        return m_task.Init("provider " + Name(), "provider");
    }
    void OnStopWork() override
    {
        m_task.recorder->Note("stop provider " + Name());
        if (m_task.behaviour == "throw in stop")
            throw std::runtime_error("no way");
    }

private:
    std::string Name() const { return {GetName().begin(), GetName().end()}; }
    Task m_task;
};

class Consumer : public IdleConsumer {
public:
    Consumer(std::wstring a_name, Task a_task) : IdleConsumer(std::move(a_name)), m_task(std::move(a_task)) {}
    ~Consumer() override { m_task.recorder->Note("destroy consumer " + Name()); }
    bool Init() override
    {
        if (m_task.behaviour == "ask at the end")
            m_asking = std::thread([this] {
                const int answer = ShowMessage(L"?", L"?", 4);
                m_task.recorder->Note("answer " + std::to_string(answer));
            });
        return m_task.Init("consumer " + Name(), "consumer");
    }
    void OnStopWork() override
    {
        m_task.recorder->Note("stop consumer " + Name());
        if (m_asking.joinable())
            m_asking.join();
        if (m_task.behaviour == "throw in stop")
            throw std::runtime_error("no way");
    }

private:
    std::string Name() const { return {GetName().begin(), GetName().end()}; }
    Task m_task;
    std::thread m_asking;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    const std::uint64_t address = a_options["recorder"];
    const std::wstring behaviour = a_options["behaviour"];
    const std::wstring name = a_options["name"];
    const Task task{std::bit_cast<Recorder*>(address), {behaviour.begin(), behaviour.end()}};
    a_registry.AddProvider(std::make_unique<Provider>(name + L"P", task));
    if (task.behaviour == "throw in create")
        throw std::runtime_error("no keys");
    if (task.behaviour == "hang in create")
        task.recorder->Hang();
    if (task.behaviour == "add nothing")
        a_registry.AddConsumer(nullptr);
    a_registry.AddConsumer(std::make_unique<Consumer>(name + L"C", task));
}

} // namespace

KALVENTO_PLUGIN(TEST_PLUGIN_NAME, "1.5", &CreateModules)
