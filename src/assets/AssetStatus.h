#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The session status of an asset.
namespace AssetStatus {

/// The numbers are the codes of the data feed themselves, packed by VeloTools::CharIntConverter.
enum Value : std::uint32_t {
    StatusUnknown = 0,
    StatusAfterSession = 49,
    StatusBalancing = 50,
    StatusSuspended = 51,
    StatusTradingResumed = 52,
    StatusBeforeClosing = 65,
    StatusClosing = 66,
    StatusMorningMonitoring = 67,
    StatusMarketMakerIntervention = 69,
    StatusEveningMonitoring = 70,
    StatusTradingSuspension = 73,
    StatusBasicMonitoring = 78,
    StatusOpening = 79,
    StatusBeforeOpening = 80,
    StatusExtraRound = 82,
    StatusSession = 83,
    StatusTransitional = 84,
    StatusSystemClosed = 90,
    StatusBalancing2B = 12866,
    StatusBalancing2H = 12872,
    StatusBalancing2P = 12880,
    StatusSuspended3D = 13124,
    StatusSuspended3Z = 13146
};

/// StatusUnknown for an empty code, the null text and any code that isn't known. More than four characters raise
/// std::length_error.
KALVENTO_API Value ToStatusValue(std::string_view a_code);

/// The code of the data feed; a number outside the table gives the characters that it is packed from.
KALVENTO_API std::string ValueToCode(Value a_value);

/// Polish text for the user; empty for a number outside the table.
KALVENTO_API std::wstring ValueToLabel(Value a_value);

} // namespace AssetStatus
