#pragma once

#include "modules/ProviderBase.h"
#include "provider_kit/CheckedRows.h"
#include "provider_kit/ConnectionState.h"
#include "provider_kit/IMarketStore.h"
#include "provider_kit/KnownInstruments.h"
#include "provider_kit/LiveItems.h"
#include "provider_kit/OperationsKeeper.h"
#include "provider_kit/PastQueue.h"
#include "provider_kit/StoreFailure.h"
#include "provider_kit/StoreFaults.h"
#include "provider_kit/SubscriptionBook.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace kalvento::internal {

/// What the threads of a StoreProvider share. Each part has a lock of its own, which guards its own data and nothing
/// else. Who holds what when a lock is taken:
///
/// 1. A number's lock (SubscriptionBook::Subscription::Lock): none, or that of the callback one is in. Callbacks run
///    under it, and may call any operation of the provider. Two callbacks that stop each other's number wait for ever.
/// 2. StoreEngine's: none, or a number's. Under it the store is opened and closed, and nothing else of the store is
///    asked.
/// 3. All others (ConnectionState's, PastQueue's, LiveItems', KnownInstruments', OperationsKeeper's, StoreFaults', and
///    the book's own): those of 1 and 2. Under them the store isn't asked, no callback runs, and no lock is taken but by rule 4.
/// 4. The book's own is taken under LiveItems' as well.
struct StoreParts {
    StoreParts(ProviderBase& a_provider, std::unique_ptr<IMarketStore> a_store)
        : provider(a_provider), store(std::move(a_store))
    {}

    HistoryOperations ReadOperations(const std::string& a_isin)
    {
        std::wstring fault;
        HistoryOperations read = operations.Read(
            a_isin, keepsOperations ? provider.GetOperationFilePath(a_isin) : std::wstring(), fault);
        TellFaults("operations " + a_isin, fault);
        return read;
    }

    /// In a handler: the store failed at that instrument, or without one.
    void NoteFailure(const char* a_place, int a_line, const std::string& a_isin)
    {
        LogStoreFailure(provider, a_place, a_line, a_isin);
        // Without a connection it is the break that the user is told.
        if (a_isin.empty() || connection.IsConnected())
            TellFaults(S_failed + a_isin, FailureText());
    }
    /// The store served that instrument, or did what it was asked for without one.
    void NoteSuccess(const std::string& a_isin) { TellFaults(S_failed + a_isin, std::wstring()); }
    /// In a handler: that instrument's data are damaged, which lasts until the list of instruments is read again.
    void NoteDamage(const char* a_place, int a_line, const std::string& a_isin)
    {
        LogStoreFailure(provider, a_place, a_line, a_isin);
        TellFaults(S_damaged + a_isin, FailureText());
    }
    /// All instruments are asked for anew.
    void ForgetFailures()
    {
        faults.Forget(S_failed);
        faults.Forget(S_damaged);
    }
    /// Empty: all is well with it.
    void TellFaults(const std::string& a_about, const std::wstring& a_fault)
    {
        TellFaults(a_about, a_fault.empty() ? std::vector<std::wstring>() : std::vector{a_fault});
    }
    void TellFaults(const std::string& a_about, std::vector<std::wstring> a_faults)
    {
        if (faults.Tell(a_about, std::move(a_faults)))
            provider.NotifyChangeConnectionStatus();
    }

    static constexpr const char* S_failed = "failed ";
    static constexpr const char* S_damaged = "damaged ";

    ProviderBase& provider;
    std::unique_ptr<IMarketStore> store; // gone only when the threads are
    ConnectionState connection;
    StoreFaults faults;
    OperationsKeeper operations{*store};
    std::atomic<bool> keepsOperations = false; // in files
    KnownInstruments instruments;
    const CheckedRows rows{*store, instruments};
    SubscriptionBook book;
    PastQueue past;
    LiveItems live;
};

} // namespace kalvento::internal
