#pragma once

#include "provider_kit/LiveThread.h"
#include "provider_kit/StoreFailure.h"
#include "provider_kit/StoreParts.h"
#include "provider_kit/SubscriptionSteps.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kalvento::internal {

/// The work behind StoreProvider: its subscriptions and the two threads that serve them.
///
/// The thread of the past takes each subscription from its start to where the live thread can go on with it:
/// operations, history, synchronization. It works in steps of one part of the rows and takes the next subscription
/// after each, so that a short one needn't wait for a long one. The live thread delivers the rows from there on to each
/// subscription that has got so far. A subscription's position changes under its number's lock only, which is what
/// joins the two without a gap. SubscriptionSteps has the steps, LiveThread the other thread, StoreParts what both of
/// them use and the rules of its locks; here is what happens when the store has news.
///
/// What a store raises, and rows that aren't as IMarketStore promises, cost the step or the item at hand and nothing
/// else: it waits for the new connection where the store says that it is broken, and otherwise for a pause that doubles
/// with every consecutive failure. News of the item doesn't cut the pause short, or a store that fails at each row
/// would fill the log. DamagedData ends the subscriptions that ran into it.
class StoreEngine : public IMarketStoreListener {
public:
    StoreEngine(ProviderBase& a_provider, std::unique_ptr<IMarketStore> a_store);
    ~StoreEngine() override;

    /// Closes the store, ends all subscriptions and the threads. Further calls do nothing.
    void End();
    void SwitchConnection(bool a_connect);
    bool Start(const Subscribe::StartParams& a_params);
    StoreParts& GetParts() { return m_parts; }

    // From the store, and the provider's own command.
    void RowsAdded(const std::string& a_isin) override;
    void Broken(const std::wstring& a_reason) override;
    void Restored() override;
    void InstrumentsChanged() override;
    void LeftOut(std::vector<std::wstring> a_faults) override;

private:
    // Any thread.
    bool SwitchStore(bool a_connect);
    void CloseStore(); // m_switch held
    void AddTask(std::function<void()> a_task);

    // The thread of the past.
    void TellPast();
    void RunTask(const std::function<void()>& a_task, std::uint64_t a_news);
    void RunStep(const ServedPtr& a_served);
    void LookForFirstRow(const ServedPtr& a_served);
    void CutOffDamaged(Served& a_served);
    void CutOffItem(const std::string& a_isin);
    void ReadInstruments();
    void EndWhatIsGone(const InstrumentList& a_before, const InstrumentList& a_now);
    void TellConsumers();
    void Reconnect(std::uint64_t a_news);
    void Revisit(bool a_synchronize);
    static bool MustGoBack(Served& a_served, bool a_synchronize);

    StoreParts m_parts;
    std::mutex m_switch; // held over Open and Close
    bool m_hasEnded = false;
    LiveThread m_live;
    SubscriptionSteps m_steps; // of the past's thread alone, like the next one
    FailurePause m_taskPause;
    std::thread m_past; // last: it uses all the others
};

} // namespace kalvento::internal
