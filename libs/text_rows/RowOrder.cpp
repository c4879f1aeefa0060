#include "text_rows/RowOrder.h"

#include "text_rows/TextFields.h"
#include "time/TimeParts.h"

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
}

RowOrder::Verdict RowOrder::Take(const WallTime& a_time, std::uint32_t a_symbol, NDateTime& a_taken)
{
    std::int64_t seconds = a_time.seconds;
    if (m_convertAll || a_time.absolute) {
        if (!a_time.absolute && m_inputZone)
            seconds = m_inputZone->ToUtc(seconds);
        seconds -= m_stampShift;
        if (m_outputZone)
            seconds = m_outputZone->ToLocal(seconds);
    } else {
        seconds -= m_stampShift;
    }
    if (seconds < S_firstSecond || seconds >= S_endSecond) {
        m_fault = {.found = "the time lies outside of the years 100 to 4095"};
        return {LineFate::EFateBad, seconds};
    }
    if ((m_from && seconds < *m_from) || (m_to && seconds >= *m_to))
        return {LineFate::EFateOutside, seconds};

    if (a_symbol >= m_last.size())
        m_last.resize(a_symbol + 1);
    LastRow& before = m_last[a_symbol];
    bool falls = false;
    if (seconds < before.seconds || (seconds == before.seconds && a_time.nanoseconds <= before.nanoseconds)) {
        falls = seconds < before.seconds || a_time.nanoseconds < before.nanoseconds;
        if (m_options.order == EOrderDrop)
            return {LineFate::EFateDropped, seconds};
        if (m_options.order == EOrderRefuse) {
            m_fault = {.help = EOptionOrder,
                       .found =
                           falls ? "the time falls behind the one before" : "the time equals the one before",
                       .expected = "rising times"};
            return {LineFate::EFateBad, seconds};
        }
    } else {
        before.seconds = seconds;
        before.nanoseconds = a_time.nanoseconds;
    }
    if (seconds > before.shownSecond) {
        before.shownSecond = seconds;
        before.time = m_maker.Make(seconds);
    } else if (before.time.GetMilliSec() < S_greatestCounter && before.time.ToDouble() >= 0.0) {
        // Below day number zero a step would move the time back, and the engine would leave the row out as a late one:
        // rows of one second share their time there.
        before.time = kalvento::internal::TimeMaker::NextStep(before.time);
    }
    a_taken = before.time;
    return {falls ? LineFate::EFateRaised : LineFate::EFateTaken, seconds};
}

} // namespace kalvento::rows
