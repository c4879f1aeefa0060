#include "modules/ConsumerBase.h"

#include "assets/Asset.h"
#include "support/TestMediator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class PlainConsumer : public ConsumerBase {
public:
    PlainConsumer() : ConsumerBase(EGenericModuleNone, L"Wykres", L"") {}
    MOCK_METHOD(unsigned int, AddInstrument, (HWND, const Asset&), (override));
    HICON GetTitleBarIconHandle() override { return nullptr; }
    void OnStopWork() override {}
    void ProcessOperations(unsigned int, const HistoryOperations&) override {}
    void ProcessHistory(unsigned int, History&&) override {}
    void ProcessHistoryEnd(unsigned int) override {}
    void ProcessSynchronization(unsigned int, Synchronization&&) override {}
    void ProcessRecord(unsigned int, const Record&) override {}
    void ProcessCurrentState(unsigned int, const CurrentState&) override {}
    void ProcessOffers(unsigned int, const Offers&) override {}
    void ProcessLatestRecords(unsigned int, const LatestRecords&) override {}
    void RequestRefused(unsigned int, std::wstring_view) override {}
    void RequestEnded(unsigned int) override {}
};

} // namespace

TEST(ConsumerBaseTest, OnlyWhatWasAddedIsTold)
{
    TestMediator mediator;
    testing::NiceMock<PlainConsumer> consumer;
    const Asset asset(nullptr, "KGH", "KGHM", "GPW", "PLKGHM000017");
    int place = 0;
    const auto window = reinterpret_cast<HWND>(&place);
    EXPECT_CALL(consumer, AddInstrument(window, testing::Ref(asset)))
        .WillOnce(testing::Return(0U))
        .WillOnce(testing::Return(3U));
    EXPECT_EQ(consumer.AddInstrumentFromQuickDialog(window, asset), 0U);
    EXPECT_TRUE(mediator.Calls().empty());
    EXPECT_EQ(consumer.AddInstrumentFromQuickDialog(window, asset), 3U);
    EXPECT_EQ(mediator.Calls(), std::vector<std::string>{"InstrumentAddedFromQuickDialog"});
}

TEST(ConsumerBaseTest, CommandsGoWhereTheHostSays)
{
    class AnsweringMediator : public TestMediator {
    public:
        CCmdTarget* GetCmdTarget(ConsumerBase* a_consumer) override
        {
            return reinterpret_cast<CCmdTarget*>(a_consumer);
        }
    };
    const AnsweringMediator mediator;
    const testing::NiceMock<PlainConsumer> consumer;
    const ConsumerBase& base = consumer;
    EXPECT_EQ(static_cast<const void*>(consumer.GetCmdTarger()), static_cast<const void*>(&base));
}
