#include "settings/KalventoPaths.h"

#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace {

/// A copy of the probe, installed in a folder of its own, with a home folder of its own. What stands in these paths
/// depends on where the running program lies, so a test can't ask in its own process.
class KalventoPathsTest : public testing::Test {
protected:
    KalventoPathsTest()
    {
        std::filesystem::create_directories(m_binary);
        std::filesystem::create_directories(m_home);
        std::filesystem::copy_file(KALVENTO_PATHS_PROBE, m_binary / "program");
    }

    /// What the probe prints: the values of each name, in order. a_arguments: for the shell.
    std::map<std::string, std::vector<std::string>> Run(const std::string& a_arguments) const
    {
        const std::string command = "env -u XDG_CONFIG_HOME -u XDG_DOCUMENTS_DIR XDG_DATA_HOME='" +
                                    m_data.string() + "' HOME='" + m_home.string() + "' '" +
                                    (m_binary / "program").string() + "' " + a_arguments;
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
        std::map<std::string, std::vector<std::string>> values;
        char line[4096];
        while (output != nullptr && std::fgets(line, sizeof(line), output.get()) != nullptr) {
            std::string text = line;
            text.pop_back();
            const std::size_t sign = text.find('=');
            values[text.substr(0, sign)].push_back(text.substr(sign + 1));
        }
        return values;
    }

    /// Folders and files in a folder, by name.
    static std::set<std::string> NamesIn(const std::filesystem::path& a_folder)
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(a_folder))
            names.insert(entry.path().filename().string());
        return names;
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_install = m_folder / "Zażółć  app";
    std::filesystem::path m_binary = m_install / "bin";
    std::filesystem::path m_home = m_folder / "home";
    std::filesystem::path m_data = m_folder / "data";
};

} // namespace

TEST_F(KalventoPathsTest, TheTreeFollowsTheProgramAndTheUser)
{
    auto paths = Run("First 'Kalvento Ą'"); // the second name moves the documents
    const std::string documents = (m_home / "Documents" / "Kalvento Ą").string();
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"Before", "Bad optional access"},
        {"Binary", m_binary.string()},
        {"Install", m_install.string()},
        {"Data", (m_install / "Data").string()},
        {"Log", (m_install / "Logs").string()},
        {"Crash", (m_install / "CrashReports").string()},
        {"Styles", (m_install / "Styles").string()},
        {"Resources", (m_install / "Resources").string()},
        {"AmirBroker", (m_install / "AmiBroker").string()},
        {"DefaultSettings", (m_install / "DefaultSettings").string()},
        {"UserSettings", (m_install / "UserSettings").string()},
        {"UserDocuments", documents},
        {"UserDesktops", documents + "/Pulpity"},
        {"UserWindows", documents + "/Okna"},
        {"UserTemplates", documents + "/Szablony"},
        {"UserQRL", documents + "/Formuły QRL"},
        {"UserFile", (m_install / "UserSettings" / "Żółty.xml").string()},
        {"FactoryFile", (m_install / "DefaultSettings" / "a.b.txt").string()},
    };
    for (const auto& [name, value] : expected)
        EXPECT_EQ(paths[name].back(), value) << name;
    // What a start makes.
    EXPECT_EQ(NamesIn(m_install),
              (std::set<std::string>{"bin", "Data", "Logs", "CrashReports", "UserSettings"}));
    EXPECT_EQ(NamesIn(m_home / "Documents"), (std::set<std::string>{"First", "Kalvento Ą"}));
    EXPECT_EQ(NamesIn(documents), std::set<std::string>{"Szablony"});
}

TEST_F(KalventoPathsTest, FoldersThatCanNotBeMadeDoNotFail)
{
    std::ofstream(m_install / "Data") << "in the way";
    auto paths = Run("Kalvento");
    EXPECT_EQ(paths["Failure"], std::vector<std::string>());
    EXPECT_EQ(paths["Operations"],
              std::vector<std::string>{(m_install / "Data/Dostawca/WIG20/DataOperation.xml").string()});
}

TEST_F(KalventoPathsTest, HistoriesLieBelowTheDataFolder)
{
    auto paths = Run("Kalvento");
    const std::filesystem::path history = m_install / "Data" / "Dostawca";
    EXPECT_EQ(paths["HistoryBefore"], std::vector<std::string>{""});
    EXPECT_EQ(paths["History"], std::vector<std::string>{history.string()});
    EXPECT_EQ(paths["Symbol"], std::vector<std::string>{(history / "Łódź").string()});
    EXPECT_EQ(paths["Again"], paths["Symbol"]);
    EXPECT_EQ(paths["Operations"],
              std::vector<std::string>{(history / "WIG20" / "DataOperation.xml").string()});
    EXPECT_EQ(paths["Copy"], paths["History"]);
    EXPECT_EQ(NamesIn(history), (std::set<std::string>{"WIG20", "Łódź"}));
    EXPECT_EQ(NamesIn(history / "WIG20"), std::set<std::string>());
}

TEST_F(KalventoPathsTest, ManyUsersHaveATreeEach)
{
    using std::filesystem::perms;
    const auto nothing = [] {};
    const auto mark = [this] { std::ofstream(m_install / "installed-for-all"); };
    const auto open = [this] { std::filesystem::permissions(m_install, perms::all); };
    const auto openData = [this] {
        std::filesystem::create_directory(m_install / "Data");
        std::filesystem::permissions(m_install / "Data", perms::all);
    };
    const auto openUsers = [this, mark] {
        mark();
        std::filesystem::create_directories(m_data / "kalvento");
        std::filesystem::permissions(m_data / "kalvento", perms::all);
    };
    const std::filesystem::path atHome = m_home / ".local" / "share" / "kalvento";
    const std::tuple<const char*, std::function<void()>, std::filesystem::path> cases[] = {
        {"the user's own", nothing, m_install},
        {"marked", mark, m_data / "kalvento"},
        {"others may write", open, m_data / "kalvento"},
        {"others may write into a folder", openData, m_data / "kalvento"},
        {"others may write into the user's", openUsers, atHome},
    };
    for (const auto& [name, prepare, root] : cases) {
        SCOPED_TRACE(name);
        for (const auto& folder : {m_install, m_data, m_home})
            std::filesystem::remove_all(folder);
        for (const auto& folder : {m_binary, m_home, m_install / "plugins", m_install / "Styles" / "Noc"})
            std::filesystem::create_directories(folder);
        std::filesystem::copy_file(KALVENTO_PATHS_PROBE, m_binary / "program");
        prepare();
        const std::set<std::string> installed = NamesIn(m_install);
        auto paths = Run("Kalvento");
        EXPECT_EQ(paths["Binary"], std::vector<std::string>{(root / "bin").string()});
        EXPECT_EQ(paths["Log"], std::vector<std::string>{(root / "Logs").string()});
        if (root == m_install)
            continue;
        EXPECT_EQ(NamesIn(m_install), installed);
        EXPECT_EQ(NamesIn(root), (std::set<std::string>{"bin", "plugins", "Styles", "Data", "Logs",
                                                        "CrashReports", "UserSettings"}));
        EXPECT_EQ(std::filesystem::canonical(root / "plugins"), m_install / "plugins");
        EXPECT_EQ(std::filesystem::canonical(root / "Styles" / "Noc"), m_install / "Styles" / "Noc");
        EXPECT_EQ(std::filesystem::status(root).permissions(), perms::owner_all);
    }
    // Only the superuser can give folders away.
    if (::geteuid() != 0)
        return;
    ASSERT_EQ(::chown(m_home.c_str(), 4711, 4711), 0);
    std::filesystem::remove_all(m_data / "kalvento");
    std::filesystem::create_directory_symlink(m_home, m_data / "kalvento");
    ASSERT_EQ(::lchown((m_data / "kalvento").c_str(), 4711, 4711), 0);
    EXPECT_EQ(Run("Kalvento")["Binary"], std::vector<std::string>{(atHome / "bin").string()})
        << "a link that another user has laid";
}
