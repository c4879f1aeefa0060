#include "modules/ProvidersHelper.h"

#include "assets/Asset.h"
#include "modules/ProviderBase.h"
#include "modules/RequestParams.h"
#include "platform/CodePage.h"
#include "velo/Refuse.h"

#include <algorithm>

namespace ProvidersHelper {

std::pair<IConsumer*, unsigned int>& AddPairToContainer(unsigned int a_requestId, IConsumer* const a_consumer,
                                                        SubscribersContainer& a_container)
{
    const std::pair<IConsumer*, unsigned int> wanted(a_consumer, a_requestId);
    const auto found = std::find(a_container.begin(), a_container.end(), wanted);
    return found != a_container.end() ? *found : a_container.emplace_back(wanted);
}

bool RemovePairToContainer(unsigned int a_requestId, IConsumer* const a_consumer,
                           SubscribersContainer& a_container)
{
    const std::pair<IConsumer*, unsigned int> unwanted(a_consumer, a_requestId);
    const auto found = std::find(a_container.begin(), a_container.end(), unwanted);
    if (found != a_container.end())
        a_container.erase(found);
    return a_container.empty();
}

bool ValidateSubscribeParameters(const ProviderBase* const a_provider, const IConsumer* const a_consumer,
                                 unsigned int /*a_requestId*/, const Asset& a_asset,
                                 const RequestParams& a_requestParams)
{
    const auto refuse = [](int a_line, const char* a_message) {
        return kalvento::internal::Refuse("ProvidersHelper::ValidateSubscribeParameters", a_line, a_message);
    };

    if (a_provider == nullptr || !a_provider->IsRunning())
        return refuse(__LINE__, "Dostawca nie pracuje"_cp1250);
    // By name: a module that the host loaded anew serves the assets of its predecessor.
    if (a_asset.GetProvider()->GetName() != a_provider->GetName())
        return refuse(__LINE__, "Subskrypcja waloru z innego dostawcy"_cp1250);
    if (a_consumer == nullptr)
        return refuse(__LINE__, "Podczas subskrybcji nie podano odbiorcy"_cp1250);
    if (!a_requestParams.IsValid())
        return refuse(__LINE__, "Niepoprawne parametry subskrybcji"_cp1250);
    return true;
}

} // namespace ProvidersHelper
