// Plug-ins that fail at their start, after a provider of theirs has begun to tell things, and that go on telling when
// the host has dropped them.
#include "contract_kit/TestProvider.h"
#include "modules/IAppMediator.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "support/IdleConsumer.h"
#include "support/Testing.h"

namespace {

class TellingProvider : public TestProvider {
public:
    TellingProvider() : TestProvider(Name()) {}
    ~TellingProvider() override
    {
        m_quit = true;
        m_thread.join();
    }
    bool Init() override
    {
#ifdef FAULT_IN_INIT
        throw 7;
#else
        return TestProvider::Init();
#endif
    }

private:
    static std::wstring Name()
    {
        const std::string name = FAULT_PLUGIN;
        return {name.begin(), name.end()};
    }
    void Tell()
    {
        while (!m_quit) {
            NotifyChangeConnectionStatus();
            ShowAdditionalInfo(L"Jestem");
            SetOperationsDidToProgress(1);
            GetAppMediator()->AssetsChanged(this); // not asking whether it runs still
            GetAppMediator()->PostToMainThread([] { throw 7; });
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    std::atomic<bool> m_quit = false;
    std::thread m_thread{[this] { Tell(); }};
};

#ifdef FAULT_IN_CONSUMER
class RefusingConsumer : public IdleConsumer {
public:
    RefusingConsumer() : IdleConsumer(L"Refusing") {}
    bool Init() override { throw std::runtime_error("no screen"); }
};
#endif

void CreateModules(IModuleRegistry& a_registry, const Settings& /*a_options*/)
{
    a_registry.AddProvider(std::make_unique<TellingProvider>());
#ifdef FAULT_IN_CREATE
    throw "no keys";
#endif
#ifdef FAULT_IN_CONSUMER
    a_registry.AddConsumer(std::make_unique<RefusingConsumer>());
#endif
}

} // namespace

KALVENTO_PLUGIN(FAULT_PLUGIN, "1.0", &CreateModules)
