#include "modules/ProvidersHelper.h"

#include "assets/Asset.h"
#include "contract_kit/CheckingConsumer.h"
#include "contract_kit/TestProvider.h"
#include "modules/RequestParams.h"
#include "modules/Subscribe.h"
#include "platform/CodePage.h"
#include "support/LogWatch.h"
#include "support/Testing.h"

using ProvidersHelper::SubscribersContainer;

// Against the plainest model, a list of texts: order of subscription kept, nobody twice, true when nobody is left.
TEST(ProvidersHelperTest, BookingFollowsAPlainList)
{
    std::array<CheckingConsumer, 3> consumers;
    std::mt19937 random(62);
    for (int round = 0; round < 40; ++round) {
        SubscribersContainer container;
        std::vector<std::string> model;
        for (int step = 0; step < 60; ++step) {
            const std::size_t consumer = random() % consumers.size();
            const auto number = static_cast<unsigned int>(random() % 3 + 1);
            const std::string name = std::to_string(consumer) + ":" + std::to_string(number);
            const auto known = std::find(model.begin(), model.end(), name);
            if (random() % 2 == 0) {
                const auto& pair =
                    ProvidersHelper::AddPairToContainer(number, &consumers.at(consumer), container);
                EXPECT_TRUE(&pair >= container.data() && &pair < container.data() + container.size());
                EXPECT_EQ(pair.first, &consumers.at(consumer));
                EXPECT_EQ(pair.second, number);
                if (known == model.end())
                    model.push_back(name);
            } else {
                if (known != model.end())
                    model.erase(known);
                EXPECT_EQ(ProvidersHelper::RemovePairToContainer(number, &consumers.at(consumer), container),
                          model.empty());
            }
            std::vector<std::string> booked;
            for (const auto& [who, what] : container)
                booked.push_back(std::to_string(static_cast<CheckingConsumer*>(who) - consumers.data()) +
                                 ":" + std::to_string(what));
            ASSERT_EQ(booked, model) << round << '/' << step;
        }
    }
}

TEST(ProvidersHelperTest, TheFirstFailureIsTheOneLogged)
{
    TestProvider mine(L"Giełda");
    TestProvider stopped(L"Giełda");
    stopped.StopWork();
    TestProvider stranger(L"Inna");
    TestProvider namesake(L"Giełda");
    CheckingConsumer consumer;
    const RequestParams valid(ParamsBase::S_kindDataRecord);
    const RequestParams invalid;

    const std::string notRunning = "Dostawca nie pracuje"_cp1250;
    const std::string foreign = "Subskrypcja waloru z innego dostawcy"_cp1250;
    const std::string nobody = "Podczas subskrybcji nie podano odbiorcy"_cp1250;
    const std::string badParams = "Niepoprawne parametry subskrybcji"_cp1250;
    const struct {
        const char* what;
        const ProviderBase* provider;
        ProviderBase* assetsProvider;
        const IConsumer* consumer;
        const RequestParams* params;
        std::string message; // empty where the subscription is good
    } cases[] = {
        {"no provider", nullptr, &mine, &consumer, &valid, notRunning},
        {"stopped, and all else wrong", &stopped, &stranger, nullptr, &invalid, notRunning},
        {"foreign asset, and all behind wrong", &mine, &stranger, nullptr, &invalid, foreign},
        {"no consumer, and bad parameters", &mine, &mine, nullptr, &invalid, nobody},
        {"bad parameters", &mine, &mine, &consumer, &invalid, badParams},
        {"all good", &mine, &mine, &consumer, &valid, ""},
        {"the same name is the same provider", &mine, &namesake, &consumer, &valid, ""},
    };
    for (const auto& tried : cases) {
        SCOPED_TRACE(tried.what);
        const LogWatch log; // the message is all that tells one refusal from another
        const Asset asset(tried.assetsProvider, "KGH", "KGHM", "GPW", "PLKGHM000017");
        EXPECT_EQ(ProvidersHelper::ValidateSubscribeParameters(tried.provider, tried.consumer, 0, asset,
                                                               *tried.params),
                  tried.message.empty());
        std::vector<std::string> lines;
        if (!tried.message.empty())
            lines.push_back("ProvidersHelper::ValidateSubscribeParameters: " + tried.message);
        EXPECT_EQ(log.lines, lines);
    }
}
