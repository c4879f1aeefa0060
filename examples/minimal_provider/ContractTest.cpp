#include "RandomWalk.h"
#include "contract_kit/ProviderContract.h"
#include "provider_kit/StoreProvider.h"

#include <memory>
#include <thread>

namespace {

class RandomWalkSubject : public ProviderSubject {
public:
    RandomWalkSubject()
    {
        m_provider.SwitchConnection(true);
        while (m_provider.GetConnectionStatus() != EConnectionStatusConnected)
            std::this_thread::yield();
    }
    ProviderBase& Provider() override { return m_provider; }
    bool MakeLiveData(const Asset& /*a_asset*/) override { return true; } // the walk goes on by itself

private:
    StoreProvider m_provider = {EGenericModuleNone, L"Random walk", std::make_unique<RandomWalk>()};
};

std::unique_ptr<ProviderSubject> MakeSubject()
{
    return std::make_unique<RandomWalkSubject>();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(RandomWalk, ProviderContract,
                         testing::Values(ProviderContractCase{"plain", &MakeSubject}));
