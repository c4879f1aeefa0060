#include "contract_kit/ProviderContract.h"

#include "contract_kit/FeedProvider.h"

namespace {

class FeedSubject : public ProviderSubject {
public:
    explicit FeedSubject(FeedProvider::EThread a_thread) : m_provider(a_thread) {}

    ProviderBase& Provider() override { return m_provider; }
    bool MakeLiveData(const Asset& a_asset) override
    {
        m_provider.MakeLiveData(a_asset.GetIsin());
        return true;
    }

private:
    FeedProvider m_provider;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Feeds, ProviderContract,
    testing::Values(
        ProviderContractCase{"CallersThread",
                             [] { return std::make_unique<FeedSubject>(FeedProvider::ECallersThread); }},
        ProviderContractCase{"OwnThread",
                             [] { return std::make_unique<FeedSubject>(FeedProvider::EOwnThread); }}),
    [](const auto& a_info) { return std::string(a_info.param.name); });

// The checks themselves: a breach must show.
TEST(CheckingConsumerTest, EachBreachIsSeen)
{
    struct Case {
        const char* breach;
        std::function<void(CheckingConsumer&)> run;
    };
    const auto open = [](CheckingConsumer& a_consumer, unsigned int a_kinds, bool a_operations = false) {
        a_consumer.Open(1, RequestParams(a_kinds, a_operations));
    };
    const auto row = [] { return Record(NDateTime(2021, 3, 1), {{ESeriesId::Price, 1.0}}); };
    const auto part = [](unsigned int a_day, EInterval a_interval = EIntervalTick) {
        History history(std::set<ESeriesId>{ESeriesId::Price}, a_interval, 1);
        history.AddData(Record(NDateTime(2021, 3, a_day), {{ESeriesId::Price, 1.0}}));
        return history;
    };
    const auto synchro = [] {
        return Synchronization(EIntervalTick, 1, std::set<ESeriesId>{ESeriesId::Price});
    };
    const std::vector<Case> cases = {
        {"nobody uses", [&](auto& c) { c.ProcessRecord(1, row()); }},
        {"after the stop", [&](auto& c) { open(c, 2), c.Close(1), c.ProcessRecord(1, row()); }},
        {"after the end", [&](auto& c) { open(c, 2), c.RequestEnded(1), c.ProcessRecord(1, row()); }},
        {"after the end", [&](auto& c) { open(c, 2), c.RequestRefused(1, L"Nie"), c.RequestEnded(1); }},
        {"without a reason", [&](auto& c) { open(c, 2), c.RequestRefused(1, L""); }},
        {"a record that", [&](auto& c) { open(c, 1), c.ProcessRecord(1, row()); }},
        {"a state that",
         [&](auto& c) { open(c, 2), c.ProcessCurrentState(1, CurrentState(Offers::Series)); }},
        {"companions", [&](auto& c) { open(c, 1), c.ProcessOffers(1, Offers()); }},
        {"operations that", [&](auto& c) { open(c, 8), c.ProcessOperations(1, HistoryOperations()); }},
        {"a history that", [&](auto& c) { open(c, 2), c.ProcessHistory(1, part(1)); }},
        {"another interval", [&](auto& c) { open(c, 8), c.ProcessHistory(1, part(1, EIntervalDay)); }},
        {"before its operations", [&](auto& c) { open(c, 8, true), c.ProcessHistory(1, part(1)); }},
        {"back in time",
         [&](auto& c) { open(c, 8), c.ProcessHistory(1, part(2)), c.ProcessHistory(1, part(1)); }},
        {"after its end", [&](auto& c) { open(c, 8), c.ProcessHistoryEnd(1), c.ProcessHistory(1, part(1)); }},
        {"second end", [&](auto& c) { open(c, 8), c.ProcessHistoryEnd(1), c.ProcessHistoryEnd(1); }},
        {"an end before", [&](auto& c) { open(c, 8), c.RequestEnded(1); }},
        {"synchronization before", [&](auto& c) { open(c, 12), c.ProcessSynchronization(1, synchro()); }},
        {"record before the end", [&](auto& c) { open(c, 10), c.ProcessRecord(1, row()); }},
        {"before the synchronization", [&](auto& c) { open(c, 6), c.ProcessRecord(1, row()); }},
        {"two callbacks at once",
         [&](auto& c) {
             open(c, 2);
             c.SetReaction([&](unsigned int, CheckingConsumer::EEvent) {
                 c.SetReaction(nullptr);
                 c.ProcessRecord(1, row());
             });
             c.ProcessRecord(1, row());
         }},
    };
    for (const auto& tried : cases) {
        SCOPED_TRACE(tried.breach);
        CheckingConsumer consumer;
        tried.run(consumer);
        const auto violations = consumer.Violations();
        ASSERT_FALSE(violations.empty());
        EXPECT_NE(violations.front().find(tried.breach), std::string::npos) << violations.front();
    }
}
