#include "modules/RequestIdGenerator.h"

#include <algorithm>

unsigned int RequestIdGenerator::GetNextRequestId()
{
    const std::lock_guard lock(m_mutex);
    return ++m_lastRequestId;
}

void RequestIdGenerator::ValidateNewRequestId(unsigned int a_requestId)
{
    const std::lock_guard lock(m_mutex);
    m_lastRequestId = std::max(m_lastRequestId, a_requestId);
}

void RequestIdGenerator::GiveBackRequestId(unsigned int a_requestId)
{
    const std::lock_guard lock(m_mutex);
    // 0 was never given out, and taking it back would wrap around.
    if (a_requestId != 0 && a_requestId == m_lastRequestId)
        --m_lastRequestId;
}

void RequestIdGenerator::ResetRequestId()
{
    const std::lock_guard lock(m_mutex);
    m_lastRequestId = 0;
}
