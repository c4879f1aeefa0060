#pragma once

#include "platform/TimeZone.h"
#include "text_rows/LineFate.h"
#include "text_rows/ReadOptions.h"
#include "text_rows/RowsFault.h"
#include "text_rows/TimeText.h"
#include "time/NDateTime.h"
#include "time/TimeMaker.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace kalvento::rows {

/// Brings the rows of a text into the output's zone and into order, each symbol on its own.
class RowOrder {
public:
    /// What becomes of a row. Small enough to be returned in registers, since one is made for each row.
    struct Verdict {
        LineFate::EFate fate;
        bool repeatsTime;         ///< Its time is that of the symbol's row before.
        std::int32_t nanoseconds; ///< Of a row that is taken, those that it is to be shown with.
        std::int64_t seconds;     ///< The row's own time in the output's zone.
    };

    /// Raises RowsFault (EFaultOptions) for an unknown zone and for impossible days. a_options outlives this.
    explicit RowOrder(const ReadOptions& a_options);
    /// Candles that bear the end of their window are moved back by so many seconds.
    void SetStampShift(std::int64_t a_seconds) { m_stampShift = a_seconds; }
    /// Where a time lies: taken, bad or outside.
    Verdict Place(const WallTime& a_time)
    {
        const bool isPlain = !m_convertAll && !a_time.absolute;
        const std::int64_t seconds = isPlain ? a_time.seconds - m_stampShift : Convert(a_time);
        if (seconds >= m_firstTaken && seconds < m_endTaken)
            return {LineFate::EFateTaken, false, a_time.nanoseconds, seconds};
        return LeaveOut(seconds);
    }
    /// Judges the next row of a symbol, whose time was placed, and sets a_taken where it is taken.
    Verdict Rank(std::int64_t a_seconds, std::int32_t a_nanoseconds, std::uint32_t a_symbol,
                 NDateTime& a_taken);
    /// Both in one.
    Verdict Take(const WallTime& a_time, std::uint32_t a_symbol, NDateTime& a_taken)
    {
        const Verdict placed = Place(a_time);
        return placed.fate == LineFate::EFateTaken
                   ? Rank(placed.seconds, a_time.nanoseconds, a_symbol, a_taken)
                   : placed;
    }
    /// Why the last row that was judged EFateBad is that.
    const RowsFault::Parts& GetFault() const { return m_fault; }
    /// Times must be later than the last rows of another one.
    void ContinueFrom(const RowOrder& a_before) { m_last = a_before.m_last; }
    /// The time of the library for Verdict::seconds.
    NDateTime Show(std::int64_t a_seconds) { return m_maker.Make(a_seconds); }

    /// First day to be taken, and the day after the last one: seconds from 1970 to their starts.
    const std::optional<std::int64_t>& GetFrom() const { return m_from; }
    const std::optional<std::int64_t>& GetTo() const { return m_to; }

private:
    /// What the order of rows is judged by, for each symbol.
    struct LastRow {
        std::int64_t seconds = std::numeric_limits<std::int64_t>::min();
        std::int32_t nanoseconds = 0;
        std::int64_t shownSecond = std::numeric_limits<std::int64_t>::min(); // the second that `time` lies in
        NDateTime time;
    };

    std::int64_t Convert(const WallTime& a_time);
    Verdict LeaveOut(std::int64_t a_seconds);

    const ReadOptions& m_options;
    std::optional<TimeZone> m_inputZone;
    std::optional<TimeZone> m_outputZone;
    bool m_convertAll = false; // input and output zone differ
    std::int64_t m_stampShift = 0;
    std::optional<std::int64_t> m_from;
    std::optional<std::int64_t> m_to;
    // What all these leave of the times that the library can hold.
    std::int64_t m_firstTaken = 0;
    std::int64_t m_endTaken = 0;
    RowsFault::Parts m_fault;
    kalvento::internal::TimeMaker m_maker;
    std::vector<LastRow> m_last;
};

} // namespace kalvento::rows
