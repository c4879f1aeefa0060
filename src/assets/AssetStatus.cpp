#include "assets/AssetStatus.h"

#include "assets/FeedCode.h"
#include "velo/CharIntConverter.h"

namespace AssetStatus {

Value ToStatusValue(std::string_view a_code)
{
    const auto value = static_cast<Value>(kalvento::internal::PackFeedCode(a_code));
    switch (value) {
    case StatusAfterSession:
    case StatusBalancing:
    case StatusSuspended:
    case StatusTradingResumed:
    case StatusBeforeClosing:
    case StatusClosing:
    case StatusMorningMonitoring:
    case StatusMarketMakerIntervention:
    case StatusEveningMonitoring:
    case StatusTradingSuspension:
    case StatusBasicMonitoring:
    case StatusOpening:
    case StatusBeforeOpening:
    case StatusExtraRound:
    case StatusSession:
    case StatusTransitional:
    case StatusSystemClosed:
    case StatusBalancing2B:
    case StatusBalancing2H:
    case StatusBalancing2P:
    case StatusSuspended3D:
    case StatusSuspended3Z:
        return value;
    default:
        return StatusUnknown;
    }
}

std::string ValueToCode(Value a_value)
{
    return VeloTools::CharIntConverter::ToString(a_value);
}

std::wstring ValueToLabel(Value a_value)
{
    switch (a_value) {
    case StatusAfterSession:
        return L"po sesji";
    case StatusBalancing:
    case StatusBalancing2P:
        return L"równoważenie";
    case StatusSuspended:
    case StatusSuspended3D:
        return L"zawieszony";
    case StatusTradingResumed:
        return L"wznowienie obrotu";
    case StatusBeforeClosing:
        return L"przed zamknięciem";
    case StatusClosing:
        return L"zamknięcie";
    case StatusMorningMonitoring:
        return L"poranny monitoring";
    case StatusMarketMakerIntervention:
        return L"interwencja animatora";
    case StatusEveningMonitoring:
        return L"monitoring wieczorny";
    case StatusTradingSuspension:
        return L"zawieszenie obrotu";
    case StatusBasicMonitoring:
        return L"podstawowy monitoring";
    case StatusOpening:
        return L"otwarcie";
    case StatusBeforeOpening:
        return L"przed otwarciem";
    case StatusExtraRound:
        return L"dogrywka";
    case StatusSession:
        return L"sesja";
    case StatusTransitional:
        return L"status przejściowy";
    case StatusSystemClosed:
        return L"system zamknięty";
    case StatusBalancing2B:
        return L"(D) równoważenie";
    case StatusBalancing2H:
        return L"(G) równoważenie";
    case StatusSuspended3Z:
        return L"(O) zawieszony";
    default:
        return {};
    }
}

} // namespace AssetStatus
