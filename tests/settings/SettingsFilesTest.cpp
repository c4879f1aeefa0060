#include "settings/GeneralSettingsBase.h"
#include "settings/SettingsManager.h"

#include "platform/DpiHelper.h"
#include "platform/WidePath.h"
#include "settings/PanelSettings.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <regex>

namespace {

const std::string S_damaged = "<Module><Colour>moje</Colour>";

/// A module's settings of one value. "Version" is what an update brings up.
class ModuleSettings : public GeneralSettingsBase {
public:
    explicit ModuleSettings(std::filesystem::path a_folder) : m_folder(std::move(a_folder)) {}

    std::wstring GenerateFilePath(bool a_userFile) const override
    {
        return WidePath::ToWide(m_folder / (a_userFile ? "user.xml" : "factory.xml"));
    }
    std::string GetRootName() const override { return "Module"; }
    bool LoadSettings(const Settings& a_node) override
    {
        m_colour = static_cast<const std::string&>(a_node["Colour"]);
        return m_colour != "unusable";
    }
    void RestoreSettings(const Settings& a_node) override
    {
        m_colour = "restored " + static_cast<const std::string&>(a_node["Colour"]);
    }
    bool UpdateOldVersionUserSettings(const Settings& a_factory, Settings& a_user) const override
    {
        if (static_cast<int>(a_user["Version"]) == static_cast<int>(a_factory["Version"]))
            return false;
        a_user["Version"] = static_cast<int>(a_factory["Version"]);
        return true;
    }

    std::string m_colour = "none";

private:
    std::filesystem::path m_folder;
};

class SettingsFilesTest : public testing::Test {
protected:
    /// Names of the files that were kept aside.
    std::vector<std::string> KeptAside() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.GetPath())) {
            if (std::regex_match(entry.path().filename().string(),
                                 std::regex(R"(user\.xml\.damaged-\d{8}-\d{6}(-\d+)?)")))
                names.push_back(entry.path().filename().string());
        }
        return names;
    }
    TemporaryFolder m_folder;
    ModuleSettings m_settings{m_folder.GetPath()};
    const std::string m_factory = "<Module><Colour>red</Colour><Version>1</Version></Module>";
};

} // namespace

TEST_F(SettingsFilesTest, AFirstStartCopiesTheFactoryFile)
{
    m_folder.Write("factory.xml", m_factory);
    EXPECT_TRUE(m_settings.Prepare());
    EXPECT_EQ(m_settings.m_colour, "red");
    EXPECT_NE(m_folder.Read("user.xml").find("<Colour>red</Colour>"), std::string::npos);
    EXPECT_EQ(m_folder.Read("factory.xml"), m_factory);
    EXPECT_EQ(m_folder.CountFiles(), 2U);

    m_folder.Write("factory.xml", "<Module><Colour>unusable</Colour></Module>");
    std::filesystem::remove(m_folder / "user.xml");
    EXPECT_FALSE(m_settings.Prepare()); // what LoadSettings answers
}

TEST_F(SettingsFilesTest, TheUsersFileWinsAndIsWrittenOnlyByAnUpdate)
{
    const std::string user = "<Module><Colour>blue</Colour><Version>1</Version></Module>";
    m_folder.Write("factory.xml", m_factory);
    m_folder.Write("user.xml", user);
    EXPECT_TRUE(m_settings.Prepare());
    EXPECT_EQ(m_settings.m_colour, "blue");
    EXPECT_EQ(m_folder.Read("user.xml"), user);

    m_folder.Write("factory.xml", "<Module><Colour>red</Colour><Version>2</Version></Module>");
    EXPECT_TRUE(m_settings.Prepare());
    EXPECT_EQ(m_settings.m_colour, "blue");
    EXPECT_NE(m_folder.Read("user.xml").find("<Version>2</Version>"), std::string::npos);
    EXPECT_EQ(m_folder.CountFiles(), 2U);
}

TEST_F(SettingsFilesTest, WithoutTheFactoryFileTheUsersIsNotTakenOver)
{
    m_folder.Write("user.xml", "<Module><Colour>blue</Colour></Module>");
    EXPECT_FALSE(m_settings.Prepare());
    EXPECT_EQ(m_settings.m_colour, "none");
    EXPECT_NE(m_settings.LoadCurrentSettingsNode(), nullptr);
    EXPECT_EQ(m_settings.LoadFabricSettingsNode(), nullptr);
}

TEST_F(SettingsFilesTest, ADamagedFileOfTheUserIsKeptAside)
{
    m_folder.Write("factory.xml", m_factory);
    // Broken, of another root, empty.
    const std::vector<std::string> files = {S_damaged, "<Other/>", ""};
    for (std::size_t place = 0; place < files.size(); ++place) {
        SCOPED_TRACE(files[place]);
        m_folder.Write("user.xml", files[place]);
        const auto node = m_settings.LoadCurrentSettingsNode();
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(static_cast<const std::string&>((*node)["Colour"]), "red");
        EXPECT_NE(m_folder.Read("user.xml").find("<Colour>red</Colour>"), std::string::npos);
        const std::vector<std::string> aside = KeptAside();
        ASSERT_EQ(aside.size(), 1U);
        EXPECT_EQ(m_folder.Read(aside[0]), files[place]);
        std::filesystem::remove(m_folder / aside[0]);
    }
    // A second damage within the second takes nothing from the first.
    for (int damage = 0; damage < 3; ++damage) {
        m_folder.Write("user.xml", S_damaged);
        m_settings.LoadCurrentSettingsNode();
    }
    EXPECT_EQ(KeptAside().size(), 3U);
}

TEST_F(SettingsFilesTest, ADamagedFileStaysWhereNothingReplacesIt)
{
    m_folder.Write("user.xml", S_damaged);
    EXPECT_EQ(m_settings.LoadCurrentSettingsNode(), nullptr);
    EXPECT_EQ(m_folder.Read("user.xml"), S_damaged);
    EXPECT_EQ(m_folder.CountFiles(), 1U);
}

TEST_F(SettingsFilesTest, SavingOverADamagedFileKeepsItToo)
{
    Settings node;
    node["Colour"] = "green";
    m_folder.Write("user.xml", S_damaged);
    EXPECT_TRUE(m_settings.SaveGivenSettingsAsCurrent(node));
    ASSERT_EQ(KeptAside().size(), 1U);
    EXPECT_EQ(m_folder.Read(KeptAside()[0]), S_damaged);
    EXPECT_NE(m_folder.Read("user.xml").find("green"), std::string::npos);

    node["Colour"] = "white";
    EXPECT_TRUE(m_settings.SaveGivenSettingsAsCurrent(node));
    EXPECT_EQ(m_folder.CountFiles(), 2U);
    EXPECT_FALSE(ModuleSettings(m_folder / "missing").SaveGivenSettingsAsCurrent(node));
}

TEST_F(SettingsFilesTest, RestoringLeavesTheUsersFile)
{
    m_settings.RestoreDefaultSettings();
    EXPECT_EQ(m_settings.m_colour, "none");
    m_folder.Write("factory.xml", m_factory);
    m_folder.Write("user.xml", S_damaged);
    m_settings.RestoreDefaultSettings();
    EXPECT_EQ(m_settings.m_colour, "restored red");
    EXPECT_EQ(m_folder.Read("user.xml"), S_damaged);
}

TEST(PanelSettingsTest, PositionsAreStoredAt96Dpi)
{
    struct DpiGuard {
        ~DpiGuard() { XTPDpiHelper().SetDpi(DpiHelper::BaseDpi); }
    } guard;
    XTPDpiHelper().SetDpi(144);
    PanelSettings panel;
    panel.SetInspectorPosition({-30, 15, 300, 450});
    panel.SetInspectorVisible(false);
    Settings node;
    panel.SerializeState(node);
    EXPECT_EQ(static_cast<CRect>(node["PanelSettings"]["InspPos"]), (CRect{-20, 10, 200, 300}));
    EXPECT_FALSE(static_cast<bool>(node["PanelSettings"]["InspVis"]));

    PanelSettings back;
    back.UnSerializeState(node);
    EXPECT_EQ(back.GetInspectorData(), std::pair(CRect{-30, 15, 300, 450}, false));
    XTPDpiHelper().SetDpi(96);
    back.UnSerializeState(node);
    EXPECT_EQ(back.GetInspectorData().first, (CRect{-20, 10, 200, 300}));

    PanelSettings untouched;
    untouched.UnSerializeState(Settings());
    EXPECT_EQ(untouched.GetInspectorData(), std::pair(CRect{10, 10, 110, 110}, true));
}
