#pragma once

#include "assets/Asset.h"
#include "modules/RequestParams.h"
#include "platform/Export.h"

#include <cstdint>
#include <optional>

class IConsumer;

/// The values that a consumer hands to a provider at the start and at the end of a subscription. They are copied to
/// whatever thread the provider uses. The consumer is not owned: it ends its subscriptions before it is destroyed.
namespace Subscribe {

/// Whose subscription it is, under which number, and of what.
class KALVENTO_API Params {
public:
    /// a_requestId: from the consumer's RequestIdGenerator, so never 0.
    Params(IConsumer* a_consumer, unsigned int a_requestId, const Asset& a_asset);

    IConsumer* GetConsumer() const { return m_consumer; }
    unsigned int GetRequestId() const { return m_requestId; }
    const Asset& GetAsset() const { return m_asset; }

    /// The same subscription: consumer and number. The asset takes no part, since a number is used for one asset only.
    friend bool operator==(const Params& a_left, const Params& a_right)
    {
        return a_left.m_consumer == a_right.m_consumer && a_left.m_requestId == a_right.m_requestId;
    }

private:
    IConsumer* m_consumer;
    std::uint32_t m_requestId;
    Asset m_asset;
};

/// What a provider gets when a subscription starts.
class KALVENTO_API StartParams : public Params {
public:
    StartParams(IConsumer* a_consumer, unsigned int a_requestId, const Asset& a_asset,
                const RequestParams& a_requestParams);

    const RequestParams& GetRequestParams() const { return m_requestParams; }

private:
    RequestParams m_requestParams;
};

/// What a provider gets when a subscription ends.
class KALVENTO_API StopParams : public Params {
public:
    /// Empty a_requestParams: the whole subscription of that consumer and number. Otherwise only the kinds of data
    /// named there end, and the others flow on.
    StopParams(IConsumer* a_consumer, unsigned int a_requestId, const Asset& a_asset,
               const std::optional<RequestParams>& a_requestParams);

    const std::optional<RequestParams>& GetRequestParams() const { return m_requestParams; }

    /// Whether a_running is the subscription that this stop means: the test of operator==.
    bool Suit(const Params& a_running) const { return *this == a_running; }

private:
    std::optional<RequestParams> m_requestParams;
};

} // namespace Subscribe
