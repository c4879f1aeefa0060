#include "modules/ConsumerBase.h"

#include "assets/Asset.h"
#include "contract_kit/TestMediator.h"
#include "modules/ConsumerBLBase.h"
#include "modules/RequestParams.h"
#include "support/IdleConsumer.h"
#include "support/Testing.h"

#include <gmock/gmock.h>

namespace {

class PlainConsumer : public IdleConsumer {
public:
    PlainConsumer() : IdleConsumer(L"Wykres") {}
    MOCK_METHOD(unsigned int, AddInstrument, (HWND, const Asset&), (override));
};

class PlainLogic : public ConsumerBLBase {
public:
    using ConsumerBLBase::ConsumerBLBase;
    std::unique_ptr<ConsumerBLBase> Clone() const override { return std::make_unique<PlainLogic>(*this); }
    bool SetAsset(const Asset&) override { return false; }
    std::optional<Asset> GetAsset() const override { return std::nullopt; }
    bool SetRequestParams(const RequestParams&) override { return false; }
    RequestParams GetRequestParams() const override { return {}; }
    bool StartSubscription() override { return false; }
    void StopSubscription() override {}
    bool IsSubscribed() const override { return false; }
    void SerialiseState(Settings&) const override {}
    bool UnserialiseState(const Settings&) override { return false; }
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

TEST(ConsumerBaseTest, NewWindowsBearTheModulesName)
{
    testing::NiceMock<PlainConsumer> consumer;
    EXPECT_EQ(&consumer.GetConsumerNewWindowNameTemplate(), &consumer.GetName());
    EXPECT_EQ(consumer.RegisterConsumerName(consumer.GetConsumerNewWindowNameTemplate()), L"Wykres");
}

TEST(ConsumerBLBaseTest, ACopyHasNamePathAndNumber)
{
    PlainLogic logic(L"Średnia");
    EXPECT_EQ(logic.RequestID(), 0U);
    EXPECT_TRUE(logic.SavePath().empty());
    logic.SavePath(L"/stan");
    logic.RequestID(4000000000U);
    const auto copy = logic.Clone();
    logic.Name(L"Inna");
    EXPECT_EQ(copy->Name(), L"Średnia");
    EXPECT_EQ(copy->SavePath(), L"/stan");
    EXPECT_EQ(copy->RequestID(), 4000000000U);
}
