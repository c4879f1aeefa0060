#include "aggregation/FoldKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kalvento::internal {

namespace {

using Words = NDateTimeWords;

// From a_row on, which is not the first row.
template<bool LateTested>
std::size_t FindChangeOneByOne(const NDateTime* a_times, std::size_t a_row, std::size_t a_limit,
                               std::uint32_t a_calendarMask, std::uint32_t a_clockMask)
{
    for (; a_row < a_limit; ++a_row) {
        const NDateTime& before = a_times[a_row - 1];
        const NDateTime& time = a_times[a_row];
        if ((((Words::Calendar(before) ^ Words::Calendar(time)) & a_calendarMask) |
             ((Words::Clock(before) ^ Words::Clock(time)) & a_clockMask)) != 0)
            break;
        if (LateTested && !NotEarlier(before, time))
            break;
    }
    return a_row;
}

template<bool LateTested>
std::size_t FindChangeOf(const NDateTime* a_times, std::size_t a_first, std::size_t a_limit,
                         std::uint32_t a_calendarMask, std::uint32_t a_clockMask)
{
    std::size_t row = a_first + 1;
#if defined(__SSE2__)
    const std::uint64_t slotBits = a_calendarMask | (std::uint64_t{a_clockMask} << 32U);
    const std::uint64_t counterBits = std::uint64_t{CounterField::S_mask} << 32U;
    const __m128i slotMask = _mm_set1_epi64x(static_cast<long long>(slotBits));
    const __m128i counterMask = _mm_set1_epi64x(static_cast<long long>(counterBits));
    const __m128i statusMask = _mm_set1_epi64x(0xFFFFFFFFLL);
    const __m128d halfSecond = _mm_set1_pd(Words::S_halfSecond);
    const __m128i zero = _mm_setzero_si128();

    const auto* bytes = reinterpret_cast<const char*>(a_times);
    const char* firstBytes = bytes + a_first * sizeof(NDateTime);
    __m128d valuesBefore = _mm_set1_pd(a_times[a_first].ToDouble());
    std::uint64_t firstWords = 0;
    std::memcpy(&firstWords, firstBytes + 16, sizeof firstWords);
    __m128d wordsBefore = _mm_castsi128_pd(_mm_set1_epi64x(static_cast<long long>(firstWords)));

    // Two rows are three loads: day number and status, words and the next day number, status and words.
    const auto testTwo = [&](const char* a_row) {
        const __m128d load0 = _mm_loadu_pd(reinterpret_cast<const double*>(a_row));
        const __m128d load1 = _mm_loadu_pd(reinterpret_cast<const double*>(a_row + 16));
        const __m128d load2 = _mm_loadu_pd(reinterpret_cast<const double*>(a_row + 32));
        const __m128d words = _mm_shuffle_pd(load1, load2, 2);
        const __m128d wordsShifted = _mm_shuffle_pd(wordsBefore, words, 1);
        const __m128i wordBits = _mm_castpd_si128(words);
        const __m128i wordBitsBefore = _mm_castpd_si128(wordsShifted);
        __m128i bad = _mm_and_si128(_mm_xor_si128(wordBits, wordBitsBefore), slotMask);
        wordsBefore = words;
        if constexpr (LateTested) {
            const __m128d values = _mm_shuffle_pd(load0, load1, 2);
            const __m128d valuesShifted = _mm_shuffle_pd(valuesBefore, values, 1);
            const __m128i status = _mm_castpd_si128(_mm_shuffle_pd(load0, load2, 1));
            const __m128i counterFalls = _mm_cmpgt_epi32(_mm_and_si128(wordBitsBefore, counterMask),
                                                         _mm_and_si128(wordBits, counterMask));
            const __m128d farApart = _mm_cmple_pd(valuesShifted, _mm_sub_pd(values, halfSecond));
            const __m128d falls = _mm_cmpnge_pd(values, valuesShifted);
            bad = _mm_or_si128(bad, _mm_and_si128(status, statusMask));
            bad = _mm_or_si128(bad, _mm_andnot_si128(_mm_castpd_si128(farApart), counterFalls));
            bad = _mm_or_si128(bad, _mm_castpd_si128(falls));
            valuesBefore = values;
        }
        return _mm_cmpeq_epi32(bad, zero);
    };
    for (; row + 4 <= a_limit; row += 4) {
        const char* rows = bytes + row * sizeof(NDateTime);
        const __m128i good01 = testTwo(rows);
        const __m128i good23 = testTwo(rows + 2 * sizeof(NDateTime));
        const auto good = static_cast<unsigned int>(_mm_movemask_epi8(_mm_packs_epi32(good01, good23)));
        if (good != 0xFFFFU)
            return row + static_cast<std::size_t>(std::countr_one(good)) / 4;
    }
#endif
    return FindChangeOneByOne<LateTested>(a_times, row, a_limit, a_calendarMask, a_clockMask);
}

#if defined(__SSE2__)
// A sum of so many whole numbers below 2^40 onto one below 2^52 stays below 2^53 at every step.
constexpr std::size_t S_greatestExactCount = 4096;

/// The sum in lanes where every term and the start are whole numbers small enough for every partial sum to be exact;
/// false and nothing else where they aren't.
bool SumExactly(double& a_sum, const double* a_values, std::size_t a_count)
{
    if (!(std::fabs(a_sum) <= 4503599627370496.0) || a_sum != std::trunc(a_sum) ||
        a_count > S_greatestExactCount)
        return false;

    // Adding and subtracting 1.5 * 2^52 rounds to a whole number.
    const __m128d rounder = _mm_set1_pd(6755399441055744.0);
    const __m128d magnitude = _mm_castsi128_pd(_mm_set1_epi64x(0x7FFFFFFFFFFFFFFFLL));
    const __m128d limit = _mm_set1_pd(1099511627776.0);
    // Negative zero changes no number that it is added to, whatever its sign.
    __m128d sum0 = _mm_set_pd(-0.0, a_sum);
    __m128d sum1 = _mm_set1_pd(-0.0);
    __m128d bad0 = _mm_setzero_pd();
    __m128d bad1 = _mm_setzero_pd();
    const auto add = [&](const double* a_pair, __m128d& a_lane, __m128d& a_bad) {
        const __m128d values = _mm_loadu_pd(a_pair);
        const __m128d whole = _mm_sub_pd(_mm_add_pd(values, rounder), rounder);
        const __m128d badHere =
            _mm_or_pd(_mm_cmpneq_pd(whole, values), _mm_cmpnlt_pd(_mm_and_pd(values, magnitude), limit));
        a_bad = _mm_or_pd(a_bad, badHere);
        a_lane = _mm_add_pd(a_lane, values);
    };
    std::size_t row = 0;
    while (row + 4 <= a_count) {
        const std::size_t stop = std::min(a_count - 3, row + 64);
        for (; row < stop; row += 4) {
            add(a_values + row, sum0, bad0);
            add(a_values + row + 2, sum1, bad1);
        }
        if (_mm_movemask_pd(_mm_or_pd(bad0, bad1)) != 0)
            return false;
    }
    sum0 = _mm_add_pd(sum0, sum1);
    double sum = _mm_cvtsd_f64(sum0) + _mm_cvtsd_f64(_mm_unpackhi_pd(sum0, sum0));
    for (; row < a_count; ++row) {
        const double value = a_values[row];
        if (!(std::fabs(value) < 1099511627776.0) || value != std::trunc(value))
            return false;
        sum += value;
    }
    a_sum = sum;
    return true;
}
#endif

} // namespace

std::size_t FindChange(const NDateTime* a_times, std::size_t a_first, std::size_t a_limit,
                       std::uint32_t a_calendarMask, std::uint32_t a_clockMask, bool a_lateTested)
{
    return a_lateTested ? FindChangeOf<true>(a_times, a_first, a_limit, a_calendarMask, a_clockMask)
                        : FindChangeOf<false>(a_times, a_first, a_limit, a_calendarMask, a_clockMask);
}

void FoldExtremesInLanes(double& a_greatest, double& a_least, const double* a_high, const double* a_low,
                         std::size_t a_count)
{
#if defined(__SSE2__)
    {
        // The instructions give their second operand for NaN and for equal values, zeros of both signs included: just
        // what "take it if it is greater" gives, when the best so far stands second.
        __m128d greatest0 = _mm_set1_pd(a_greatest);
        __m128d greatest1 = greatest0;
        __m128d greatest2 = greatest0;
        __m128d greatest3 = greatest0;
        __m128d least0 = _mm_set1_pd(a_least);
        __m128d least1 = least0;
        __m128d least2 = least0;
        __m128d least3 = least0;
        std::size_t row = 0;
        for (; row + 8 <= a_count; row += 8) {
            greatest0 = _mm_max_pd(_mm_loadu_pd(a_high + row), greatest0);
            least0 = _mm_min_pd(_mm_loadu_pd(a_low + row), least0);
            greatest1 = _mm_max_pd(_mm_loadu_pd(a_high + row + 2), greatest1);
            least1 = _mm_min_pd(_mm_loadu_pd(a_low + row + 2), least1);
            greatest2 = _mm_max_pd(_mm_loadu_pd(a_high + row + 4), greatest2);
            least2 = _mm_min_pd(_mm_loadu_pd(a_low + row + 4), least2);
            greatest3 = _mm_max_pd(_mm_loadu_pd(a_high + row + 6), greatest3);
            least3 = _mm_min_pd(_mm_loadu_pd(a_low + row + 6), least3);
        }
        greatest0 = _mm_max_pd(_mm_max_pd(greatest1, greatest0), _mm_max_pd(greatest3, greatest2));
        least0 = _mm_min_pd(_mm_min_pd(least1, least0), _mm_min_pd(least3, least2));
        double greatest = _mm_cvtsd_f64(_mm_max_pd(_mm_unpackhi_pd(greatest0, greatest0), greatest0));
        double least = _mm_cvtsd_f64(_mm_min_pd(_mm_unpackhi_pd(least0, least0), least0));
        FoldExtremesInOrder(greatest, least, a_high + row, a_low + row, a_count - row);
        // Which zero came first is lost in the lanes.
        if (greatest != 0.0 && least != 0.0) {
            a_greatest = greatest;
            a_least = least;
            return;
        }
    }
#endif
    FoldExtremesInOrder(a_greatest, a_least, a_high, a_low, a_count);
}

double ColumnSum::AddInLanes(double a_start, const double* a_values, std::size_t a_count)
{
#if defined(__SSE2__)
    if (m_runsWithoutLanes == 0) {
        double sum = a_start;
        if (SumExactly(sum, a_values, a_count))
            return sum;
        m_runsWithoutLanes = 64;
    } else {
        --m_runsWithoutLanes;
    }
#endif
    return SumInOrder(a_start, a_values, a_count);
}

} // namespace kalvento::internal
