#pragma once

#include "history_operations/HistoryOperations.h"
#include "series/DSProp.h"
#include "series/History.h"
#include "series/Offers.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// One instrument of a store. Narrow texts are opaque bytes, as in Asset.
struct StoreInstrument {
    std::string isin;
    std::string shortName;
    std::string longName;
    std::string market;
    std::vector<std::wstring> groups; ///< Groups that it belongs to, by the names shown to the user.
    std::set<DSProp> series;          ///< Of its rows: the tick shape, or with the three candle series added.
    IntervalAndMultiplicity interval = {EIntervalTick, 1}; ///< Of its rows.
    NDateTime firstDay; ///< First day on which there are rows; after lastDay if there are none.
    NDateTime lastDay;
    bool live = false; ///< Rows can be added; only for single ticks.
    /// A different number means that the rows that were there before are stale: their subscriptions end.
    std::uint64_t generation = 0;
    std::wstring fault; ///< Not empty: it can't be served, for that reason, Polish, for the user.
};

/// What a store tells its provider, on threads of its own and never while it holds a lock that an operation of
/// IMarketStore takes. The provider returns quickly: it reads on a thread of its own. News comes one at a time and in
/// the order of what happened: the last of Broken and Restored holds.
class IMarketStoreListener {
public:
    virtual ~IMarketStoreListener() = default;
    /// GetRowCount of the instrument rose, or its book changed. May come late and once for many rows, but is never left
    /// out while connected.
    virtual void RowsAdded(const std::string& a_isin) = 0;
    /// The connection broke; the store tries to get it back by itself. a_reason: Polish, for the user.
    virtual void Broken(const std::wstring& a_reason) = 0;
    /// Connected, for the first time or again. Rows may have come in between.
    virtual void Restored() = 0;
    /// Instruments or their operations came, went or changed.
    virtual void InstrumentsChanged() = 0;
    /// What the store leaves out, each with its place and the reason, Polish, for the user. It takes the place of what
    /// was told before; nothing: all is well again.
    virtual void LeftOut(std::vector<std::wstring> a_faults) = 0;

    IMarketStoreListener(const IMarketStoreListener&) = delete;
    IMarketStoreListener& operator=(const IMarketStoreListener&) = delete;

protected:
    IMarketStoreListener() = default;
};

/// A store of market data in which the rows of each instrument are numbered from 0 on, in order of time. A row that was
/// seen once keeps its number and its contents for as long as the store object lives, also from one Open to the next:
/// that lets history, synchronization and live data of a subscription meet without a gap and without a repeated row,
/// whatever breaks in between. Times rise strictly from one row to the next (NDateTime's ordering counter tells rows of
/// one second apart). A source whose past was rewritten gives the instrument another generation (InstrumentsChanged).
///
/// All operations may be called from any thread. Those that read raise std::exception when the store can't be read now
/// (no connection, a damaged file), with a text for the log; the provider asks again after Restored or, where the store
/// didn't say that it is broken, after a pause. Rows that aren't as described here count as such a failure. DamagedData
/// says that asking again won't help: the subscriptions that ran into it end. An instrument that isn't there has no
/// rows.
class IMarketStore {
public:
    virtual ~IMarketStore() = default;

    /// Connects or begins to try, and informs the listener from then on (not owned; may be called before this returns).
    /// Called once, or again after Close. Returns at once.
    virtual void Open(IMarketStoreListener& a_listener) = 0;
    /// Ends the connection. Once it returns, the listener is no longer called. Not called from a listener's operation.
    virtual void Close() = 0;

    /// All instruments, each ISIN once, in any order.
    virtual std::vector<StoreInstrument> ReadInstruments() = 0;
    /// Corporate operations of the instrument; none for one without.
    virtual HistoryOperations ReadOperations(const std::string& a_isin) = 0;
    /// How many rows can be seen now.
    virtual std::uint64_t GetRowCount(const std::string& a_isin) = 0;
    /// Number of the first row, among those to be seen now, whose time isn't before a_time; GetRowCount where there is
    /// none.
    virtual std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time) = 0;
    /// Rows a_first to before a_last, of the instrument's interval and series. Fewer only where fewer can be seen.
    virtual History ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) = 0;
    /// The order book as it is now. Empty where the store knows none: there is none then but for the offers that the
    /// last row bears, where single ticks have columns of those.
    virtual std::optional<Offers> ReadOffers(const std::string& a_isin) = 0;

    IMarketStore(const IMarketStore&) = delete;
    IMarketStore& operator=(const IMarketStore&) = delete;

protected:
    IMarketStore() = default;
};
