#include "console_consumer/ConsoleConsumer.h"

#include "contract_kit/ConsumerContract.h"
#include "support/Testing.h"

namespace {

kalvento::host::ScreenOptions PlainOptions()
{
    kalvento::host::ScreenOptions options;
    options.plain = true;
    options.interval = {EIntervalDay, 1};
    options.exitAtEnd = true;
    return options;
}

class ConsoleSubject : public ConsumerSubject {
public:
    ~ConsoleSubject() override { m_consumer.StopWork(); }
    IConsumer& Consumer() override { return m_consumer; }
    void Show(const Asset& a_asset) override { m_consumer.AddInstrument({}, a_asset); }
    void Hide(const Asset& a_asset) override { m_consumer.RemoveInstrument(a_asset); }
    void HandleMessages() override { m_consumer.Refresh(); }

private:
    std::ostringstream m_out;
    ConsoleConsumer m_consumer{PlainOptions(), m_out};
};

// Offers the asset, and leaves everything else to the test.
class ManualFeed : public FeedProvider {
public:
    ManualFeed() : FeedProvider(ECallersThread) {}
    bool StartSubscription(const Subscribe::StartParams& a_params) override
    {
        requestId = a_params.GetRequestId();
        return true;
    }
    void StopSubscription(const Subscribe::StopParams& /*a_params*/) override {}
    unsigned int requestId = 0;
};

Record Row(unsigned int a_day, unsigned int a_second, double a_price)
{
    return {NDateTime(2021, 3, a_day, 9, 0, a_second, 0), {{Price, a_price}}};
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Console, ConsumerContract,
                         testing::Combine(testing::Values(ConsumerContractCase{
                                              "Console", [] { return std::make_unique<ConsoleSubject>(); }}),
                                          testing::Values(FeedProvider::ECallersThread,
                                                          FeedProvider::EOwnThread)));

TEST(ConsoleConsumerTest, LinesTellEachChangeOnceAndTheEndEndsTheHost)
{
    TestMediator mediator;
    ManualFeed feed;
    std::ostringstream out;
    ConsoleConsumer consumer(PlainOptions(), out);
    ASSERT_NE(consumer.AddInstrument({}, *feed.GetAssets().front()), 0U);

    History history(std::set<ESeriesId>{Price}, EIntervalTick, 1);
    ASSERT_TRUE(history.AddData(Row(1, 0, 10.5)));
    ASSERT_TRUE(history.AddData(Row(2, 0, 11.0)));
    consumer.ProcessHistory(feed.requestId, std::move(history));
    consumer.ProcessHistoryEnd(feed.requestId);
    Synchronization synchronization(EIntervalTick, 1, std::set<ESeriesId>{Price});
    ASSERT_TRUE(synchronization.AddData(Row(3, 0, 12.0)));
    const Synchronization again = synchronization;
    consumer.ProcessSynchronization(feed.requestId, std::move(synchronization));
    consumer.ProcessRecord(feed.requestId, Row(3, 1, 12.25));
    // After a break: the row that was missed, and nothing of what is known.
    Synchronization missed = again;
    ASSERT_TRUE(missed.AddData(Row(3, 1, 12.25)));
    ASSERT_TRUE(missed.AddData(Row(3, 2, 0.1)));
    consumer.ProcessSynchronization(feed.requestId, std::move(missed));
    consumer.ProcessRecord(feed.requestId, Row(4, 0, 9.0));
    consumer.Refresh();
    consumer.Refresh();
    const std::string name = feed.GetAssets().front()->GetShortName();
    std::string expected;
    for (const char* line :
         {";2021-03-01 09:00:00;history;10.5;10.5;10.5;10.5;\n",
          ";2021-03-02 09:00:00;history;11;11;11;11;\n", ";2021-03-03 09:00:00;history;12;12;12;12;\n",
          ";2021-03-03 09:00:01;changed;12;12.25;12;12.25;\n",
          ";2021-03-03 09:00:02;changed;12;12.25;0.1;0.1;\n", ";2021-03-04 09:00:00;new;9;9;9;9;\n"})
        expected += name + line;
    EXPECT_EQ(out.str(), expected);
    EXPECT_TRUE(mediator.Calls().empty());

    // The user is told the cause, and once.
    consumer.SymbolDeleted(feed.requestId, "");
    consumer.RequestEnded(feed.requestId);
    consumer.Refresh();
    consumer.Refresh();
    EXPECT_EQ(mediator.Calls(), (std::vector<std::string>{"ShowNotificationMessage", "RequestExit 0"}));
    consumer.StopWork();
}
