#include "contract_kit/ConsumerContract.h"

#include "modules/RequestIdGenerator.h"
#include "support/IdleConsumer.h"

namespace {

/// As small as a consumer can be: one subscription an asset.
class ShowingConsumer : public IdleConsumer {
public:
    ShowingConsumer() : IdleConsumer(L"Licznik") {}
    ~ShowingConsumer() override { ShowingConsumer::OnStopWork(); }

    void Show(const Asset& a_asset)
    {
        const unsigned int number = m_numbers.GetNextRequestId();
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
    void OnStopWork() override
    {
        while (!m_shown.empty())
            Hide(Asset(m_shown.front().second));
    }

private:
    RequestIdGenerator m_numbers;
    std::vector<std::pair<unsigned int, Asset>> m_shown; // main thread
};

class CountingSubject : public ConsumerSubject {
public:
    IConsumer& Consumer() override { return m_consumer; }
    void Show(const Asset& a_asset) override { m_consumer.Show(a_asset); }
    void Hide(const Asset& a_asset) override { m_consumer.Hide(a_asset); }

private:
    ShowingConsumer m_consumer;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Counting, ConsumerContract,
    testing::Combine(testing::Values(ConsumerContractCase{
                         "Counting", [] { return std::make_unique<CountingSubject>(); }}),
                     testing::Values(FeedProvider::ECallersThread, FeedProvider::EOwnThread)));
