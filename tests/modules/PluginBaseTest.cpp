#include "modules/PluginBase.h"

#include "contract_kit/TestMediator.h"
#include "modules/IAppMediator.h"
#include "platform/CodePage.h"
#include "platform/ThreadId.h"
#include "support/IdleConsumer.h"
#include "support/RaisedText.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

namespace {

class PlainModule : public IdleConsumer {
public:
    explicit PlainModule(unsigned int a_kind = 1)
        : IdleConsumer(L"Moduł", static_cast<EGenericModule>(a_kind))
    {}
};

} // namespace

TEST(GenericModuleTest, KindsOneToThirteenHaveTheirFamily)
{
    for (unsigned int kind = 0; kind < 20; ++kind)
        EXPECT_EQ(PlainModule(kind).GetBookmarkFamilyType(),
                  kind >= 1 && kind <= 13 ? static_cast<int>(kind) : -1)
            << kind;
    EXPECT_EQ(PlainModule(0xFFFFFFFFU).GetBookmarkFamilyType(), -1);
}

// Windows come and go: living ones never share a name, and a freed number is the next one given.
TEST(GenericModuleTest, LivingWindowsNeverShareAName)
{
    std::mt19937 random(7);
    PlainModule module;
    std::vector<std::wstring> living;
    const std::vector<std::wstring> templates = {L"A", L"%s %n", L"A (2)"};
    for (int step = 0; step < 400; ++step) {
        if (!living.empty() && random() % 8 < 3) {
            const auto gone = living.begin() + static_cast<std::ptrdiff_t>(random() % living.size());
            module.UnregisterConsumerName(*gone);
            living.erase(gone);
            continue;
        }
        const std::wstring& nameTemplate = templates.at(random() % templates.size());
        std::wstring expected = nameTemplate;
        for (int number = 2; std::find(living.begin(), living.end(), expected) != living.end(); ++number)
            expected = nameTemplate + L" (" + std::to_wstring(number) + L")";
        const std::wstring name = module.RegisterConsumerName(nameTemplate);
        ASSERT_EQ(name, expected) << step;
        living.push_back(name);
        ASSERT_EQ(module.RegisterConsumerName(L""), L"") << "no name is no name";
        module.UnregisterConsumerName(L"");
    }
}

TEST(PluginBaseTest, WithoutAMediatorTextsAreDropped)
{
    ASSERT_FALSE(PluginBase::IsAppMediatorValid());
    PluginBase::ShowMessage(L"nic");
    PluginBase::ShowNotificationMessage(L"nic");
    EXPECT_EQ(PluginBase::ShowMessage(L"tytuł", L"pytanie", 4), -1);
    EXPECT_EQ(PluginBase::GetMainThreadId(), 0U);
}

TEST(PluginBaseTest, TextsReachTheHost)
{
    TestMediator mediator;
    mediator.messageBoxAnswer = 7;
    PluginBase::ShowMessage(L"pierwszy");
    EXPECT_EQ(PluginBase::ShowMessage(L"tytuł", L"drugi", 4), 7);
    PluginBase::ShowNotificationMessage(L"trzeci");
    EXPECT_EQ(mediator.Calls(),
              (std::vector<std::string>{"ShowMessage", "ShowMessage 4", "ShowNotificationMessage"}));
    EXPECT_EQ(mediator.Texts(), (std::vector<std::wstring>{L"pierwszy", L"tytuł|drugi", L"trzeci"}));
}

TEST(PluginBaseTest, TheMainThreadIsTheMediators)
{
    EXPECT_THROW(PluginBase::CheckMainThreadCondition(), KalventoException);

    TestMediator mediator;
    EXPECT_NO_THROW(PluginBase::CheckMainThreadCondition());
    EXPECT_EQ(PluginBase::GetMainThreadId(), GetCurrentThreadId());
    std::string text;
    std::thread([&text] {
        text = kalvento::tests::RaisedText<KalventoException>([] { PluginBase::CheckMainThreadCondition(); });
    }).join();
    EXPECT_TRUE(text.starts_with("PluginBase::CheckMainThreadCondition\t")) << text;
    EXPECT_TRUE(text.ends_with("Wywołanie operacji z wątku który nie jest wątkiem głównym"_cp1250)) << text;
}
