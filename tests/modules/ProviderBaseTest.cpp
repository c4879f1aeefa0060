#include "modules/ProviderBase.h"

#include "assets/AssetsGroup.h"
#include "contract_kit/TestMediator.h"
#include "contract_kit/TestProvider.h"
#include "modules/ProviderSettings.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "settings/SettingsManager.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace {

/// Folders of the application, with the user's part thrown away afterwards. What lies beside the test program is named
/// after the process, since several run at once.
class Folders {
public:
    Folders()
    {
        ::setenv("HOME", m_home.GetPath().c_str(), 1);
        KalventoPaths::Initialize(L"ModulesTest");
    }
    ~Folders()
    {
        for (const auto& path : m_made)
            std::filesystem::remove_all(path);
    }
    Folders(const Folders&) = delete;
    Folders& operator=(const Folders&) = delete;

    std::wstring UniqueName() const { return m_home.GetPath().filename().wstring(); }
    std::filesystem::path Made(const std::wstring& a_path)
    {
        m_made.push_back(WidePath::ToPath(a_path));
        return m_made.back();
    }

private:
    TemporaryFolder m_home;
    std::vector<std::filesystem::path> m_made;
};

class PlainSettings : public ProviderSettings {
public:
    void WriteSettings(Settings& a_settings) const override { a_settings["Server"] = server; }
    void ReadSettings(const Settings& a_settings) override
    {
        ++reads;
        server = static_cast<int>(a_settings["Server"]);
    }
    int server = 1;
    int reads = 0;
};

} // namespace

TEST(ProviderBaseTest, AStoppedProviderFallsSilentButForWorkAhead)
{
    TestMediator mediator;
    TestProvider provider(L"Giełda");
    const auto tellAll = [&] {
        provider.AssetsChanged();
        provider.NotifyChangeConnectionStatus();
        provider.AddOperationsToDoToProgress(3);
        provider.SetOperationsDidToProgress(2);
        provider.ShowAdditionalInfo(L"Koniec");
    };
    tellAll();
    const std::vector<std::string> all = {"AssetsChanged", "NotifyChangeConnectionStatus",
                                          "AddOperationsToDoToProgress 3", "SetOperationsDidToProgress 2",
                                          "ShowMessage"};
    EXPECT_EQ(mediator.Calls(), all);
    provider.StopWork();
    tellAll();
    const auto calls = mediator.Calls();
    EXPECT_EQ(calls.size(), all.size() + 1);
    EXPECT_EQ(calls.back(), "AddOperationsToDoToProgress 3");
    provider.Run();
    tellAll();
    EXPECT_EQ(mediator.Calls().size(), 2 * all.size() + 1);
}

TEST(ProviderBaseTest, MessagesEndInAFullStop)
{
    TestMediator mediator;
    TestProvider provider(L"Giełda");
    for (const wchar_t* text : {L"", L"Brak danych", L"Brak danych.", L"Brak danych\n", L".", L"Czemu?"})
        provider.ShowAdditionalInfo(text);
    EXPECT_EQ(mediator.Texts(), (std::vector<std::wstring>{
                                    L"Giełda:\n\nBrak danych.", L"Giełda:\n\nBrak danych.",
                                    L"Giełda:\n\nBrak danych\n", L"Giełda:\n\n.", L"Giełda:\n\nCzemu?."}));
}

TEST(ProviderSettingsTest, WhatIsSavedIsLoadedAndNothingElse)
{
    Folders folders;
    const std::wstring name = folders.UniqueName();
    const auto file = folders.Made(SettingsManager::GenerateSettingsFilePath(true, name));

    PlainSettings settings;
    EXPECT_FALSE(settings.LoadState(name));
    EXPECT_EQ(settings.reads, 0);
    EXPECT_EQ(settings.server, 1);
    EXPECT_FALSE(std::filesystem::exists(file));

    settings.server = 42;
    ASSERT_TRUE(settings.SaveState(name));
    PlainSettings loaded;
    ASSERT_TRUE(loaded.LoadState(name));
    EXPECT_EQ(loaded.server, 42);
    EXPECT_EQ(loaded.reads, 1);

    Settings stored;
    EXPECT_TRUE(stored.LoadFromFile(WidePath::ToWide(file), "Settings"));
}
