#include "modules/Subscribe.h"

namespace Subscribe {

Params::Params(IConsumer* a_consumer, unsigned int a_requestId, const Asset& a_asset)
    : m_consumer(a_consumer), m_requestId(a_requestId), m_asset(a_asset)
{}

StartParams::StartParams(IConsumer* a_consumer, unsigned int a_requestId, const Asset& a_asset,
                         const RequestParams& a_requestParams)
    : Params(a_consumer, a_requestId, a_asset), m_requestParams(a_requestParams)
{}

StopParams::StopParams(IConsumer* a_consumer, unsigned int a_requestId, const Asset& a_asset,
                       const std::optional<RequestParams>& a_requestParams)
    : Params(a_consumer, a_requestId, a_asset), m_requestParams(a_requestParams)
{}

} // namespace Subscribe
