#include "assets/AssetStatus.h"

#include "assets/FeedCode.h"
#include "velo/CharIntConverter.h"

namespace AssetStatus {

using kalvento::internal::LabelOf;
using kalvento::internal::PackFeedCode;

namespace {

constexpr std::pair<Value, std::wstring_view> S_labels[] = {
    {StatusAfterSession, L"po sesji"},
    {StatusBalancing, L"równoważenie"},
    {StatusBalancing2P, L"równoważenie"},
    {StatusSuspended, L"zawieszony"},
    {StatusSuspended3D, L"zawieszony"},
    {StatusTradingResumed, L"wznowienie obrotu"},
    {StatusBeforeClosing, L"przed zamknięciem"},
    {StatusClosing, L"zamknięcie"},
    {StatusMorningMonitoring, L"poranny monitoring"},
    {StatusMarketMakerIntervention, L"interwencja animatora"},
    {StatusEveningMonitoring, L"monitoring wieczorny"},
    {StatusTradingSuspension, L"zawieszenie obrotu"},
    {StatusBasicMonitoring, L"podstawowy monitoring"},
    {StatusOpening, L"otwarcie"},
    {StatusBeforeOpening, L"przed otwarciem"},
    {StatusExtraRound, L"dogrywka"},
    {StatusSession, L"sesja"},
    {StatusTransitional, L"status przejściowy"},
    {StatusSystemClosed, L"system zamknięty"},
    {StatusBalancing2B, L"(D) równoważenie"},
    {StatusBalancing2H, L"(G) równoważenie"},
    {StatusSuspended3Z, L"(O) zawieszony"},
};

} // namespace

Value ToStatusValue(std::string_view a_code)
{
    const auto value = static_cast<Value>(PackFeedCode(a_code));
    return LabelOf(value, S_labels).empty() ? StatusUnknown : value;
}

std::string ValueToCode(Value a_value)
{
    return VeloTools::CharIntConverter::ToString(a_value);
}

std::wstring ValueToLabel(Value a_value)
{
    return std::wstring(LabelOf(a_value, S_labels));
}

} // namespace AssetStatus
