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
