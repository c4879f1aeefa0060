#include "file_provider/FileProvider.h"

#include "contract_kit/ProviderContract.h"
#include "file_provider/FileProviderSettings.h"
#include "plugins/file_provider/StoreFixture.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "support/MarketData.h"
#include "support/Testing.h"

#include <unistd.h>

namespace {

/// Folders of the application are thrown away with the home folder that they lie in. Histories lie beside the programs,
/// in a folder by the instrument's name, which bears the process here: tests run at the same time.
class FileSubject : public ProviderSubject {
public:
    FileSubject()
    {
        ::setenv("HOME", m_home.GetPath().c_str(), 1);
        KalventoPaths::Initialize(L"FileProviderTest");
        std::filesystem::copy_file(MarketData::Path("ticks/coinbase_btcusd_2023-09-05_16h.csv"),
                                   m_sources / (m_symbol + ".csv"));
        m_provider = std::make_unique<FileProvider>(FileStoreOptions{m_sources.GetPath(), {}, 1.0, {}},
                                                    [this] { return m_clock.Now(); });
        EXPECT_TRUE(m_provider->Init());
        m_histories = WidePath::ToPath(m_provider->GetHistorySymbolPath(m_symbol));
        m_provider->SwitchConnection(true);
        // The list comes from the store's thread.
        const auto until = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (m_provider->GetAssets().empty() && std::chrono::steady_clock::now() < until)
            std::this_thread::yield();
    }
    ~FileSubject() override
    {
        m_provider.reset();
        std::filesystem::remove_all(m_histories);
    }
    ProviderBase& Provider() override { return *m_provider; }
    bool MakeLiveData(const Asset& a_asset) override
    {
        const std::lock_guard lock(m_mutex);
        const auto wait = m_provider->GetFileStore().GetTimeToNextRow(a_asset.GetIsin());
        if (!wait)
            return false;
        m_clock.Advance(*wait);
        m_provider->GetFileStore().ClockMoved();
        return true;
    }

private:
    const std::string m_symbol = "BTCUSD" + std::to_string(::getpid());
    TemporaryFolder m_home;
    TemporaryFolder m_sources;
    std::filesystem::path m_histories;
    HandClock m_clock;
    std::mutex m_mutex; // one step of the clock at a time
    std::unique_ptr<FileProvider> m_provider;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Files, ProviderContract,
                         testing::Values(ProviderContractCase{
                             "Folder", [] { return std::make_unique<FileSubject>(); }}),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

TEST(FileProviderTest, WithoutAFolderItSaysSo)
{
    const TestMediator mediator;
    FileProvider provider(FileStoreOptions{});
    EXPECT_EQ(provider.GetStatusLabel(), L"nie wskazano folderu");
    EXPECT_TRUE(provider.GetAssets().empty());
    provider.StopWork();
}

TEST(FileProviderSettingsTest, OptionsGoBeforeWhatWasKept)
{
    FileProviderSettings kept;
    kept.options = {"/some/fołder", "2024-08-08", 12.5, "09:30", true};
    Settings stored;
    kept.WriteSettings(stored);
    Settings options;
    options["Speed"] = "0";
    FileProviderSettings read;
    read.ReadSettings(stored);
    read.ReadSettings(options);
    EXPECT_EQ(read.options.folder, kept.options.folder);
    EXPECT_EQ(read.options.day, "2024-08-08");
    EXPECT_EQ(read.options.speed, 0.0);
    EXPECT_EQ(read.options.start, "09:30");
    EXPECT_TRUE(read.options.sort);
    options["Speed"] = "12,5";
    kept.ReadSettings(options);
    EXPECT_EQ(kept.options.speed, 12.5) << "what is no number leaves what was kept";
}
