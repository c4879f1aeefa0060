#include "time/IntervalTranslator.h"

#include <fmt/xchar.h>

#include <array>

namespace {

struct IntervalWords {
    const wchar_t* label;
    const wchar_t* unit; // after the count and a blank
};

// By the numbers of EInterval.
constexpr std::array<IntervalWords, 9> S_words = {{{L"Pusty", nullptr},
                                                   {L"Tikowy", L"tick"},
                                                   {L"Sekundowy", L"sek."},
                                                   {L"Minutowy", L"min."},
                                                   {L"Godzinowy", L"godz."},
                                                   {L"Dzienny", L"dni"},
                                                   {L"Tygodniowy", L"tyg."},
                                                   {L"Miesięczny", L"mies."},
                                                   {L"Roczny", L"lat"}}};

const IntervalWords& WordsOf(EInterval a_interval)
{
    return S_words[a_interval < S_words.size() ? a_interval : EIntervalEmpty];
}

} // namespace

namespace IntervalTranslator {

const wchar_t* ToLabel(EInterval a_interval)
{
    return WordsOf(a_interval).label;
}

std::wstring ToDescription(EInterval a_interval, unsigned int a_multiplicity)
{
    const IntervalWords& words = WordsOf(a_interval);
    if (a_multiplicity == 0 || words.unit == nullptr)
        return ToLabel(EIntervalEmpty);
    if (a_multiplicity == 1)
        return words.label;
    return fmt::format(L"{} {}", static_cast<int>(a_multiplicity), words.unit);
}

} // namespace IntervalTranslator
