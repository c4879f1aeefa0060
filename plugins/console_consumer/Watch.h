#pragma once

#include "assets/Asset.h"
#include "folding/SubscriptionCandles.h"
#include "host/ScreenOptions.h"
#include "modules/RequestParams.h"
#include "series/LatestRecords.h"
#include "series/Offers.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

class CurrentState;
class Synchronization;

/// One subscription: the asset, the request, and what has come so far. What providers deliver may come on any thread,
/// as may the questions.
class Watch {
public:
    /// What there is to see, at one moment.
    struct Snapshot {
        IntervalAndMultiplicity interval;
        History candles{EIntervalTick, 1};
        std::optional<Offers> offers;
        std::vector<LatestRecords::LastRecord> trades; ///< The newest first.
        std::optional<double> lastPrice;
        int direction = 0;               ///< Of the last price's last change: above 0 up, below 0 down.
        std::optional<double> reference; ///< What the change of the day is counted from.
        int decimals = 2;                ///< Of prices.
        bool historyEnded = false;
        std::wstring ended;            ///< Why nothing comes any more; empty while something may.
        std::optional<NDateTime> time; ///< Of the latest data: the clock of the playback.
        std::optional<double> open;    ///< Here and below: of the day so far, where the provider knows.
        std::optional<double> high;
        std::optional<double> low;
        std::optional<double> volume;
    };

    /// Chooses what to ask for among what the provider offers for the asset: all kinds, in that interval or, where the
    /// provider only has coarser candles, in its own. Null where it offers nothing, or nothing that candles can be made
    /// from.
    static std::unique_ptr<Watch> Make(const Asset& a_asset, IntervalAndMultiplicity a_interval,
                                       const kalvento::host::ScreenOptions& a_options);

    const Asset& GetAsset() const { return m_asset; }
    const RequestParams& GetRequestParams() const { return m_request; }

    void SetOperations(const HistoryOperations& a_operations);
    void AddHistory(History&& a_history);
    void HistoryEnd();
    void SetSynchronization(Synchronization&& a_synchronization);
    void AddRecord(const Record& a_record);
    void SetState(const CurrentState& a_state);
    void SetOffers(const Offers& a_offers);
    void SetTrades(const LatestRecords& a_trades);
    /// a_reason: for the user. False where it had ended before; the first reason stays.
    bool End(std::wstring_view a_reason);

    bool HasEnded() const;
    Snapshot Look(std::size_t a_candleCount) const;
    /// The lines that have come since the last call; only collected with ScreenOptions::plain.
    std::string TakeLines();

private:
    Watch(const Asset& a_asset, const std::set<DSProp>& a_series, RequestParams a_request,
          IntervalAndMultiplicity a_interval, const kalvento::host::ScreenOptions& a_options);

    void NotePrice(double a_price);
    void NoteTime(const NDateTime& a_time);
    void NoteLastCandle();
    void PrintPast();
    template<class Change>
    void PrintChanges(Change a_change);

    const Asset m_asset;
    const std::string m_symbol; // for lines
    const RequestParams m_request;
    const kalvento::host::ScreenOptions m_options;
    int m_decimals = 2;

    mutable std::mutex m_mutex; // of all below
    SubscriptionCandles m_model;
    bool m_pastPrinted = false;
    std::optional<Offers> m_offers;
    std::vector<LatestRecords::LastRecord> m_trades;
    std::optional<double> m_lastPrice;
    int m_direction = 0;
    std::optional<NDateTime> m_time;
    std::map<ESeriesId, double> m_day; // from the state
    bool m_hasEnded = false;
    std::wstring m_endReason;
    std::string m_lines;
};
