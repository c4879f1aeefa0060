#include "assets/AssetStatus.h"

#include "assets/FeedCode.h"
#include "velo/CharIntConverter.h"

namespace AssetStatus {

namespace {

// Null for a number outside the table.
const wchar_t* LabelOf(Value a_value)
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
        return nullptr;
    }
}

} // namespace

Value ToStatusValue(std::string_view a_code)
{
    const auto value = static_cast<Value>(kalvento::internal::PackFeedCode(a_code));
    return LabelOf(value) != nullptr ? value : StatusUnknown;
}

std::string ValueToCode(Value a_value)
{
    return VeloTools::CharIntConverter::ToString(a_value);
}

std::wstring ValueToLabel(Value a_value)
{
    const wchar_t* const label = LabelOf(a_value);
    return label != nullptr ? label : L"";
}

} // namespace AssetStatus
