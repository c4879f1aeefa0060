#pragma once

#include "platform/Export.h"
#include "series/DataSeriesSet.h"

#include <optional>
#include <utility>

/// A block of past data. Holds no state beyond its base; written and read like any other set.
class KALVENTO_API History : public DataSeriesSet {
public:
    History(EInterval a_interval, unsigned int a_multiplicity);
    History(const std::set<ESeriesId>& a_series, EInterval a_interval, unsigned int a_multiplicity);
    History(const std::set<DSProp>& a_series, EInterval a_interval, unsigned int a_multiplicity);
    History(EInterval a_interval, unsigned int a_multiplicity, std::vector<NDateTime>&& a_times,
            Columns&& a_columns);
    explicit History(std::istream& a_stream);

    History(const History&) = default;
    History& operator=(const History&) = default;
    History(History&&) noexcept = default;
    History& operator=(History&&) noexcept = default;
    ~History() override = default;

    /// Daily or longer.
    bool IsEodHistory() const;
    /// Single ticks, not candles of several.
    bool IsSingleTickHistory() const;
    /// Years of the first and of the last time; nothing on an empty history.
    std::optional<std::pair<unsigned long, unsigned long>> GetFirstLastYear() const;
    /// The rows of whole days, both included, whatever the times of day. Rests on times in order. Raises
    /// std::invalid_argument when a_from is later than a_to, their times of day included.
    History GetSubHistory(NDateTime a_from, NDateTime a_to) const;
    /// Puts older rows in front. False, changing nothing, unless both are valid, of one interval and one list of series,
    /// and the older rows end before the first row here.
    bool InsertedHistoryAtTheBeginning(const History& a_older);

private:
    static bool HasTheSameIntervalMultiplicity(const History& a_left, const History& a_right);
    static bool HasTheSameSeries(const History& a_left, const History& a_right);
};
