#include "provider_kit/SubscriptionBook.h"

#include "contract_kit/CheckingConsumer.h"
#include "contract_kit/TestProvider.h"
#include "modules/RequestParams.h"
#include "support/Testing.h"

// What the contract suites can't see from outside: the moment of the last callback.
TEST(SubscriptionBookTest, TheNumberIsFreeInTheLastCallbackAndAStopWaitsForIt)
{
    TestProvider provider(L"Giełda");
    CheckingConsumer consumer;
    SubscriptionBook book;
    const Asset asset(&provider, "A", "A", "GPW", "PL1");
    const auto make = [&] {
        return std::make_shared<SubscriptionBook::Subscription>(
            Subscribe::StartParams(&consumer, 7, asset, RequestParams(ParamsBase::S_kindDataRecord)));
    };
    const auto first = make();
    const auto second = make();
    const auto nothing = [](IConsumer&, unsigned int) {};
    ASSERT_EQ(book.Book(provider, first), SubscriptionBook::EBookingDone);
    EXPECT_EQ(book.Book(provider, second), SubscriptionBook::EBookingAlreadyBooked);
    book.End(*first, [&](IConsumer&, unsigned int) {
        EXPECT_EQ(book.Book(provider, second), SubscriptionBook::EBookingDone);
        throw std::runtime_error("logged, and ends nothing");
    });
    book.End(*first, [](IConsumer&, unsigned int) { ADD_FAILURE() << "a second end"; });
    EXPECT_FALSE(SubscriptionBook::Tell(*first, ~0U, nothing));
    EXPECT_TRUE(SubscriptionBook::Tell(*second, ParamsBase::S_kindDataRecord, nothing));
    EXPECT_EQ(book.GetCount(), 1U);

    std::atomic<bool> inside = false;
    std::atomic<bool> left = false;
    std::thread ending([&] {
        book.End(*second, [&](IConsumer&, unsigned int) {
            inside = true;
            for (int turn = 0; turn < 1000; ++turn)
                std::this_thread::yield();
            left = true;
        });
    });
    while (!inside)
        std::this_thread::yield();
    book.Stop({&consumer, 7, asset, std::nullopt});
    EXPECT_TRUE(left);
    ending.join();
    book.Close();
    EXPECT_EQ(book.Book(provider, make()), SubscriptionBook::EBookingRefused);
}
