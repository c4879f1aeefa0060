#pragma once

#include "alerts/AlertEventBase.h"

/// The record of type "10", 20 bytes, with its length set. What the payload means is up to the alert modules.
#pragma pack(push, 1)
class AlertEventCloudInfo : public AlertEventBase {
public:
    static constexpr TypeCode S_typeCode{'1', '0'};
    static constexpr std::uint32_t S_payloadLength = 13;

    constexpr AlertEventCloudInfo() : AlertEventBase(S_typeCode, S_payloadLength) {}

    std::uint64_t m_payload64 = 0;
    std::uint32_t m_payload32 = 0;
    std::uint8_t m_payload8 = 0;
};
#pragma pack(pop)

static_assert(sizeof(AlertEventCloudInfo) == sizeof(AlertEventBase) + AlertEventCloudInfo::S_payloadLength &&
              std::is_trivially_copyable_v<AlertEventCloudInfo>);
