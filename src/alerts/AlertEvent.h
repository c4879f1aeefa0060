#pragma once

#include "alerts/AlertEventBase.h"

/// The record of an event with two values, 19 bytes. The length in its header stays 0.
#pragma pack(push, 1)
class AlertEvent : public AlertEventBase {
public:
    constexpr AlertEvent() = default;
    /// Both values are cut to 32 bits.
    constexpr AlertEvent(unsigned long a_first, unsigned long a_second)
        : m_first(static_cast<std::uint32_t>(a_first)), m_second(static_cast<std::uint32_t>(a_second))
    {}

    std::uint32_t m_reserved = 0;
    std::uint32_t m_first = 0;
    std::uint32_t m_second = 0;
};
#pragma pack(pop)

static_assert(sizeof(AlertEvent) == 19 && std::is_trivially_copyable_v<AlertEvent>);
