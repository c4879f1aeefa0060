#pragma once

#include "text_rows/RepeatFinder.h"
#include "text_rows/RowBlock.h"
#include "text_rows/RowLayout.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kalvento::tool {

/// Looks for what no market gives: a high below the low, negative prices, days that repeat or are missing, rows that are
/// there twice.
class MarketCheck {
public:
    /// Where a row stands and when it was, as its line says it.
    struct Origin {
        std::uint64_t place = 0; ///< Line or row, from 1.
        NDateTime time;
    };
    /// An answer: the question, the fault (empty: sound), and what is worth knowing all the same.
    struct Answer {
        std::string_view question;
        std::string fault{};
        std::string remark{};
    };

    /// a_place: words the place of an origin, as "file:7:1".
    MarketCheck(rows::RowLayout a_layout, std::function<std::string(std::uint64_t)> a_place);

    /// The next rows with their origins.
    void Add(const rows::RowBlock& a_rows, const std::vector<Origin>& a_origins);
    /// All answers.
    std::vector<Answer> GetAnswers() const;

private:
    /// How often something was found, and where first.
    struct Finding {
        std::uint64_t count = 0;
        std::uint64_t place = 0;

        void Add(std::uint64_t a_place)
        {
            if (count++ == 0)
                place = a_place;
        }
    };
    /// Of one instrument.
    struct LastDay {
        bool isKnown = false;
        std::int64_t day = 0; // since 1970-01-01
    };

    void JudgeValues(const rows::RowBlock& a_rows, std::size_t a_row, std::uint64_t a_place);
    void JudgeDay(LastDay& a_last, const Origin& a_origin);
    std::optional<double> ValueOf(const rows::RowBlock& a_rows, std::size_t a_row, ESeriesId a_series) const;
    std::string FaultOf(const Finding& a_finding, const char* a_what) const;
    Answer DaysAnswer() const;
    Answer DoubledAnswer() const;

    const rows::RowLayout m_layout;
    const std::function<std::string(std::uint64_t)> m_place;
    const bool m_isCandle;
    const bool m_isDaily;
    const bool m_knowsDays; // rows of at most a day
    std::uint64_t m_rows = 0;
    Finding m_badPrices;
    Finding m_badVolumes;
    Finding m_highBelowLow;
    Finding m_openOutside;
    Finding m_closeOutside;
    Finding m_repeatedDays;
    Finding m_doubled;
    Finding m_missing; // weekdays; the place is that of the row after the first of them
    std::int64_t m_firstMissing = 0;
    std::int64_t m_longestGap = 0; // in weekdays
    std::int64_t m_weekdays = 0;   // from each instrument's first day to its last
    std::vector<LastDay> m_lastDays;
    rows::RepeatFinder m_repeats;
};

} // namespace kalvento::tool
