#pragma once

#include "alerts/AlertEventBase.h"

/// The record with which an alert is generated, 48 bytes. The length in its header stays 0. What the payload means is
/// up to the alert modules.
#pragma pack(push, 1)
class AlertEventGenerate : public AlertEventBase {
public:
    constexpr AlertEventGenerate() = default;

    std::array<std::uint8_t, 41> m_payload{};
};
#pragma pack(pop)

static_assert(sizeof(AlertEventGenerate) == 48 && std::is_trivially_copyable_v<AlertEventGenerate>);
