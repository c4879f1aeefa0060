#pragma once

#include "platform/Export.h"

#include <string>
#include <string_view>

class CurrentState;
class History;
class HistoryOperations;
class LatestRecords;
class Offers;
class ProviderBase;
class Record;
class Synchronization;

/// How providers deliver data. Subscriptions hold a consumer by a raw pointer, so it ends them (by
/// ProviderBase::StopSubscription) before it is destroyed.
///
/// Every callback but UpdateAssets carries the request number under which the consumer subscribed, so that one consumer
/// can hold many subscriptions. Unknown numbers are to be ignored: another subscription's end may cross a callback.
///
/// Order, for one request number:
///  1. ProcessOperations, once, where the request asked for it (NeedsDataOperationInfo);
///  2. where history was asked for: ProcessHistory, any number of times, then ProcessHistoryEnd once;
///  3. where synchronization was asked for: ProcessSynchronization, and no ProcessRecord before it;
///  4. what is live, for as long as it lasts: ProcessRecord, ProcessCurrentState, ProcessOffers, ProcessLatestRecords
///     in any order, except that a first ProcessCurrentState comes before the other two of its kind. These three don't
///     wait for 1 to 3, ProcessRecord does. After a break of the connection comes a new ProcessSynchronization, and
///     changed operations come in a new ProcessOperations;
///  5. RequestRefused or RequestEnded, at most one of them and once, and nothing after it. A request for history alone
///     always ends so; one for live data only if the provider ends it. After StopSubscription neither comes.
/// SymbolDeleted may come at any time before 5, and is no end by itself.
///
/// Corrected, then folded: corporate operations change rows, and candles no longer than the day on which they happen.
/// Who corrects asks for candles of at most a day, keeps rows as they were delivered, and folds them into longer candles
/// after correcting; operations that change later reach what it holds. SubscriptionCandles does all of that.
///
/// Threads: a callback arrives on whatever thread the provider calls from; the library makes no hop. Callbacks of one
/// request number never run at once; those of different numbers may. The first may come before StartSubscription has
/// returned, on the same thread: a consumer notes its number before the call. Objects handed over by && may be kept;
/// those by const & live until the callback returns. The provider catches and logs what a callback throws; the
/// subscription goes on.
///
/// StopSubscription may be called from inside a callback, but only for that callback's own number: two threads that
/// stop each other's would wait for ever. From any other thread it waits for a running callback of its number, so don't
/// hold a lock there that a callback takes.
class KALVENTO_API IConsumer {
public:
    virtual ~IConsumer();

    /// The symbol no longer exists at the provider. Data already received stay valid.
    virtual void SymbolDeleted(unsigned int a_requestId, const std::string& a_isin);

    /// Corporate operations of the asset, complete. They belong to the history of this request, and come before it; a
    /// later call replaces them, for the rows that came already, too.
    virtual void ProcessOperations(unsigned int a_requestId, const HistoryOperations& a_operations) = 0;
    /// A part of the past, in the interval of the request and not corrected; parts come oldest first, and the rows of a
    /// later part lie after those of an earlier. An empty range gives no part at all.
    virtual void ProcessHistory(unsigned int a_requestId, History&& a_history) = 0;
    /// The whole history has arrived.
    virtual void ProcessHistoryEnd(unsigned int a_requestId) = 0;
    /// Ties live records to the past: from its first row on it replaces what the consumer holds, and its last row is
    /// open for the records that follow. Comes again after a break of the connection.
    virtual void ProcessSynchronization(unsigned int a_requestId, Synchronization&& a_synchronization) = 0;
    /// One live row, as it came: a tick, or a candle so far. Times don't fall from one to the next.
    virtual void ProcessRecord(unsigned int a_requestId, const Record& a_record) = 0;
    /// The state of the asset. What changed since the previous call is marked so; the first one holds all that is
    /// known.
    virtual void ProcessCurrentState(unsigned int a_requestId, const CurrentState& a_state) = 0;
    /// The order book, with the same marks.
    virtual void ProcessOffers(unsigned int a_requestId, const Offers& a_offers) = 0;
    /// The latest transactions; each call replaces the previous one.
    virtual void ProcessLatestRecords(unsigned int a_requestId, const LatestRecords& a_records) = 0;
    /// The provider had accepted the request, but its source won't serve it (no permission, no such asset, too many
    /// requests). a_reason: Polish, for the user, never empty. The number is no longer booked.
    virtual void RequestRefused(unsigned int a_requestId, std::wstring_view a_reason) = 0;
    /// All that was asked for has been delivered, or the provider stops serving it. The number is no longer booked.
    virtual void RequestEnded(unsigned int a_requestId) = 0;

    /// The provider's list of assets changed. Sent to consumers that hold a subscription there, at any time.
    virtual void UpdateAssets(ProviderBase* a_provider);
};
