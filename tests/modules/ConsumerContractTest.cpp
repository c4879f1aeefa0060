#include "contract_kit/ConsumerContract.h"

#include "modules/ConsumerBase.h"
#include "modules/RequestIdGenerator.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace {

/// As small as a consumer can be: one subscription an asset, counting what comes.
class CountingConsumer : public ConsumerBase {
public:
    CountingConsumer() : ConsumerBase(EGenericModuleNone, L"Licznik", L"") {}
    ~CountingConsumer() override { CountingConsumer::OnStopWork(); }

    void Show(const Asset& a_asset)
    {
        const unsigned int number = m_numbers.GetNextRequestId();
        {
            const std::lock_guard lock(m_mutex);
            m_counts[number] = 0;
        }
        if (a_asset.GetProvider()->StartSubscription({this, number, a_asset, RequestParams(15, true)}))
            m_shown.emplace_back(number, a_asset);
        else
            m_numbers.GiveBackRequestId(number);
    }
    void Hide(const Asset& a_asset)
    {
        std::erase_if(m_shown, [&](const auto& a_shown) {
            if (a_shown.second != a_asset)
                return false;
            a_asset.GetProvider()->StopSubscription({this, a_shown.first, a_asset, std::nullopt});
            return true;
        });
    }

    HICON GetTitleBarIconHandle() override { return nullptr; }
    void OnStopWork() override
    {
        while (!m_shown.empty())
            Hide(Asset(m_shown.front().second));
    }
    void ProcessOperations(unsigned int a_requestId, const HistoryOperations&) override
    {
        Count(a_requestId);
    }
    void ProcessHistory(unsigned int a_requestId, History&&) override { Count(a_requestId); }
    void ProcessHistoryEnd(unsigned int a_requestId) override { Count(a_requestId); }
    void ProcessSynchronization(unsigned int a_requestId, Synchronization&&) override { Count(a_requestId); }
    void ProcessRecord(unsigned int a_requestId, const Record&) override { Count(a_requestId); }
    void ProcessCurrentState(unsigned int a_requestId, const CurrentState&) override { Count(a_requestId); }
    void ProcessOffers(unsigned int a_requestId, const Offers&) override { Count(a_requestId); }
    void ProcessLatestRecords(unsigned int a_requestId, const LatestRecords&) override { Count(a_requestId); }
    void RequestRefused(unsigned int a_requestId, std::wstring_view) override { Count(a_requestId); }
    void RequestEnded(unsigned int a_requestId) override { Count(a_requestId); }

private:
    void Count(unsigned int a_requestId)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_counts.find(a_requestId); known != m_counts.end())
            ++known->second;
    }

    RequestIdGenerator m_numbers;
    std::vector<std::pair<unsigned int, Asset>> m_shown; // main thread
    std::mutex m_mutex;
    std::map<unsigned int, int> m_counts; // under m_mutex
};

class CountingSubject : public ConsumerSubject {
public:
    IConsumer& Consumer() override { return m_consumer; }
    void Show(const Asset& a_asset) override { m_consumer.Show(a_asset); }
    void Hide(const Asset& a_asset) override { m_consumer.Hide(a_asset); }

private:
    CountingConsumer m_consumer;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Counting, ConsumerContract,
    testing::Combine(testing::Values(ConsumerContractCase{
                         "Counting", [] { return std::make_unique<CountingSubject>(); }}),
                     testing::Values(FeedProvider::ECallersThread, FeedProvider::EOwnThread)));
