#pragma once

#include "platform/Export.h"

#include <utility>
#include <vector>

class Asset;
class IConsumer;
class ProviderBase;
class RequestParams;

/// Every provider checks and books its subscriptions with these. No lock is taken: a provider that books from several
/// threads protects its container.
namespace ProvidersHelper {

/// The subscribers of one thing (an asset, a group, an interval of an asset) in the order of subscription.
using SubscribersContainer = std::vector<std::pair<IConsumer*, unsigned int>>;

/// The pair of consumer and number, appended unless it is there already. The reference is good until the container
/// changes.
KALVENTO_API std::pair<IConsumer*, unsigned int>&
AddPairToContainer(unsigned int a_requestId, IConsumer* const a_consumer, SubscribersContainer& a_container);
/// Removes the pair, if it is there, and keeps the order of the rest. True when nobody is left, whether or not
/// something was removed: the feed of that item can stop.
KALVENTO_API bool RemovePairToContainer(unsigned int a_requestId, IConsumer* const a_consumer,
                                        SubscribersContainer& a_container);
/// Whether the provider can serve this: it runs, the asset is its own (compared by module name), there is a consumer,
/// and the parameters are valid. The first failure goes to the log. The asset must have a provider. The number isn't
/// checked.
KALVENTO_API bool ValidateSubscribeParameters(const ProviderBase* const a_provider,
                                              const IConsumer* const a_consumer, unsigned int a_requestId,
                                              const Asset& a_asset, const RequestParams& a_requestParams);

} // namespace ProvidersHelper
