#include "text_rows/RowOrder.h"

#include "text_rows/TextFields.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <string>

namespace kalvento::rows {

namespace {

// The years that a time of the library can hold and a calendar can show: 100 to 4095.
constexpr std::int64_t S_firstSecond = -59'011'459'200;
constexpr std::int64_t S_endSecond = 67'090'118'400;
// A counter step is 1e-10 of a day in the day number, so 50,000 of them come to 0.43 of a second: the next second is
// more than half a second away, and both `<` and the engine's test for late rows still tell the two apart.
constexpr std::uint32_t S_greatestCounter = 50000;

std::optional<TimeZone> FindZone(const std::string& a_name, EReadOption a_option)
{
    if (a_name.empty())
        return std::nullopt;
    auto zone = TimeZone::Find(a_name);
    if (!zone)
        RefuseOption(a_option, "found " + Quote(a_name),
                     "a zone of the time zone database such as Europe/Warsaw or UTC");
    return zone;
}

/// Seconds of the start of a day given by an option.
std::optional<std::int64_t> DayLimit(const std::string& a_text, EReadOption a_option)
{
    if (a_text.empty())
        return std::nullopt;
    const auto days = ParseDateText(a_text);
    if (!days)
        RefuseOption(a_option, "found " + Quote(a_text), "a day such as 2024-08-08");
    return *days * TimeParts::S_secondsOfDay;
}

} // namespace

RowOrder::RowOrder(const ReadOptions& a_options) : m_options(a_options)
{
    m_inputZone = FindZone(m_options.zone, EOptionZone);
    m_outputZone = FindZone(m_options.outputZone, EOptionOutputZone);
    m_convertAll = m_outputZone && (!m_inputZone || m_inputZone->GetName() != m_outputZone->GetName());
    if (!m_outputZone)
        m_outputZone = m_inputZone;
    m_from = DayLimit(m_options.from, EOptionFrom);
    m_to = DayLimit(m_options.to, EOptionTo);
    if (m_from && m_to && *m_from > *m_to)
        throw RowsFault({.kind = EFaultOptions,
                         .wrong = EOptionFrom,
                         .help = EOptionTo,
                         .found = m_options.from,
                         .expected = "a day not after " + m_options.to,
                         .value = m_options.to});
    if (m_to)
        *m_to += TimeParts::S_secondsOfDay;
    m_firstTaken = std::max(S_firstSecond, m_from.value_or(S_firstSecond));
    m_endTaken = std::min(S_endSecond, m_to.value_or(S_endSecond));
}

std::int64_t RowOrder::Convert(const WallTime& a_time)
{
    std::int64_t seconds = a_time.seconds;
    if (!a_time.absolute && m_inputZone)
        seconds = m_inputZone->ToUtc(seconds);
    seconds -= m_stampShift;
    return m_outputZone ? m_outputZone->ToLocal(seconds) : seconds;
}

RowOrder::Verdict RowOrder::LeaveOut(std::int64_t a_seconds)
{
    if (a_seconds >= S_firstSecond && a_seconds < S_endSecond)
        return {LineFate::EFateOutside, false, 0, a_seconds};
    m_fault = {.found = "the time lies outside of the years 100 to 4095"};
    return {LineFate::EFateBad, false, 0, a_seconds};
}

RowOrder::Verdict RowOrder::Rank(std::int64_t a_seconds, std::int32_t a_nanoseconds, std::uint32_t a_symbol,
                                 NDateTime& a_taken)
{
    if (a_symbol >= m_last.size())
        m_last.resize(a_symbol + 1);
    LastRow& before = m_last[a_symbol];
    bool falls = false;
    bool repeats = false;
    if (a_seconds < before.seconds || (a_seconds == before.seconds && a_nanoseconds <= before.nanoseconds)) {
        repeats = a_seconds == before.seconds && a_nanoseconds == before.nanoseconds;
        falls = !repeats;
        if (m_options.order == EOrderDrop)
            return {LineFate::EFateDropped, repeats, before.nanoseconds, a_seconds};
        if (m_options.order == EOrderRefuse) {
            m_fault = {.help = EOptionOrder,
                       .found =
                           falls ? "the time falls behind the one before" : "the time equals the one before",
                       .expected = "rising times"};
            return {LineFate::EFateBad, repeats, before.nanoseconds, a_seconds};
        }
    } else {
        before.seconds = a_seconds;
        before.nanoseconds = a_nanoseconds;
    }
    if (a_seconds > before.shownSecond) {
        before.shownSecond = a_seconds;
        before.time = m_maker.Make(a_seconds);
    } else if (before.time.GetMilliSec() < S_greatestCounter && before.time.ToDouble() >= 0.0) {
        // Below day number zero a step would move the time back, and the engine would leave the row out as a late one:
        // rows of one second share their time there.
        before.time = kalvento::internal::TimeMaker::NextStep(before.time);
    }
    a_taken = before.time;
    return {falls ? LineFate::EFateRaised : LineFate::EFateTaken, repeats, before.nanoseconds, a_seconds};
}

} // namespace kalvento::rows
