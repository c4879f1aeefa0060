#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <mutex>

/// Gives out request numbers, from 1 on; 0 is never one. Each consumer owns one: a subscription is named by its
/// consumer and its number together, so numbers of different consumers may coincide. Safe from any thread.
class KALVENTO_API RequestIdGenerator {
public:
    RequestIdGenerator() = default;

    unsigned int GetNextRequestId();
    /// Announces a number from a saved state: later ones are greater.
    void ValidateNewRequestId(unsigned int a_requestId);
    /// Takes back the last number given out; any other stays used, and nothing happens.
    void GiveBackRequestId(unsigned int a_requestId);
    /// Starts again from 1. Only while no number is in use.
    void ResetRequestId();

    RequestIdGenerator(const RequestIdGenerator&) = delete;
    RequestIdGenerator& operator=(const RequestIdGenerator&) = delete;

private:
    std::mutex m_mutex;
    std::uint32_t m_lastRequestId = 0; // under m_mutex
};
