#include "console_consumer/ConsoleConsumer.h"

#include "contract_kit/ConsumerContract.h"
#include "support/Testing.h"

namespace {

kalvento::host::ScreenOptions PlainOptions(IntervalAndMultiplicity a_interval = {EIntervalDay, 1})
{
    kalvento::host::ScreenOptions options;
    options.plain = true;
    options.interval = a_interval;
    options.exitAtEnd = true;
    return options;
}

std::vector<std::string> Split(const std::string& a_line, char a_mark)
{
    std::vector<std::string> fields;
    std::istringstream text(a_line);
    for (std::string field; std::getline(text, field, a_mark);)
        fields.push_back(field);
    return fields;
}

class ConsoleSubject : public ConsumerSubject {
public:
    explicit ConsoleSubject(IntervalAndMultiplicity a_interval) : m_interval(a_interval) {}
    ~ConsoleSubject() override { m_consumer.StopWork(); }
    IConsumer& Consumer() override { return m_consumer; }
    void Show(const Asset& a_asset) override { m_consumer.AddInstrument({}, a_asset); }
    void Hide(const Asset& a_asset) override { m_consumer.RemoveInstrument(a_asset); }
    void HandleMessages() override { m_consumer.Refresh(); }
    /// As a reader of the lines ends up with.
    std::optional<History> GetCandles(const Asset& a_asset) override
    {
        m_consumer.Refresh();
        std::vector<std::pair<std::string, std::vector<double>>> candles; // open, high, low, close
        std::istringstream lines(m_out.str());
        for (std::string line; std::getline(lines, line);) {
            const std::vector<std::string> fields = Split(line, ';');
            if (fields[0] != a_asset.GetShortName())
                continue;
            std::vector<double> values(4);
            std::transform(fields.begin() + 3, fields.begin() + 7, values.begin(),
                           [](const std::string& a_text) { return std::stod(a_text); });
            if (fields[2] == "changed")
                candles.pop_back();
            const auto known = std::ranges::find(candles, fields[1], &decltype(candles)::value_type::first);
            EXPECT_EQ(fields[2] == "corrected", known != candles.end()) << line;
            if (known != candles.end())
                known->second = values;
            else
                candles.emplace_back(fields[1], values);
        }
        History shown(std::set<ESeriesId>{Price, IntervalOpen, IntervalMax, IntervalMin},
                      m_interval.GetInterval(), m_interval.GetMultiplicity());
        for (const auto& [time, values] : candles)
            shown.AddData(Record(NDateTime(2021, 3, 1 + static_cast<unsigned int>(shown.GetRecordsCount())),
                                 {{Price, values[3]},
                                  {IntervalOpen, values[0]},
                                  {IntervalMax, values[1]},
                                  {IntervalMin, values[2]}}));
        return shown;
    }

private:
    IntervalAndMultiplicity m_interval;
    std::ostringstream m_out;
    ConsoleConsumer m_consumer{PlainOptions(m_interval), m_out};
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

INSTANTIATE_TEST_SUITE_P(
    Console, ConsumerContract,
    testing::Combine(testing::Values(ConsumerContractCase{"Days",
                                                          [] {
                                                              return std::make_unique<ConsoleSubject>(
                                                                  IntervalAndMultiplicity(EIntervalDay, 1));
                                                          }},
                                     ConsumerContractCase{"Weeks",
                                                          [] {
                                                              return std::make_unique<ConsoleSubject>(
                                                                  IntervalAndMultiplicity(EIntervalWeek, 1));
                                                          }}),
                     testing::Values(FeedProvider::ECallersThread, FeedProvider::EOwnThread)));

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
