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

TEST_F(SettingsFilesTest, WhatAStartMakesOfTheTwoFiles)
{
    const std::string blue = "<Module><Colour>blue</Colour><Version>1</Version></Module>";
    const std::string unusable = "<Module><Colour>unusable</Colour></Module>";
    const struct {
        const char* what;
        std::optional<std::string> factory;
        std::optional<std::string> user;
        const char* colour; // that is loaded
        const char* part;   // of the user's file afterwards; the file stays as it was where it is null
        std::size_t aside;
    } cases[] = {{"a first start", m_factory, {}, "red", "<Colour>red</Colour>", 0},
                 {"refused by the module", unusable, {}, "unusable", "unusable", 0},
                 {"the user's file wins", m_factory, blue, "blue", nullptr, 0},
                 {"a newer factory file", "<Module><Version>2</Version></Module>", blue, "blue",
                  "<Version>2</Version>", 0},
                 {"no factory file", {}, blue, "none", nullptr, 0},
                 {"a damaged file that nothing replaces", {}, S_damaged, "none", nullptr, 0},
                 {"broken", m_factory, S_damaged, "red", "<Colour>red</Colour>", 1},
                 {"another root", m_factory, "<Other/>", "red", "<Colour>red</Colour>", 1},
                 {"empty", m_factory, "", "red", "<Colour>red</Colour>", 1}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.GetPath()))
            std::filesystem::remove(entry);
        if (one.factory)
            m_folder.Write("factory.xml", *one.factory);
        if (one.user)
            m_folder.Write("user.xml", *one.user);
        ModuleSettings settings(m_folder.GetPath());
        EXPECT_EQ(settings.Prepare(), std::string(one.colour) != "none" && one.factory != unusable);
        EXPECT_EQ(settings.m_colour, one.colour);
        if (one.part != nullptr)
            EXPECT_NE(m_folder.Read("user.xml").find(one.part), std::string::npos);
        else
            EXPECT_EQ(m_folder.Read("user.xml"), *one.user);
        const std::vector<std::string> aside = KeptAside();
        ASSERT_EQ(aside.size(), one.aside);
        if (one.aside > 0) {
            EXPECT_EQ(m_folder.Read(aside[0]), *one.user);
        }
        EXPECT_EQ(m_folder.CountFiles(), (one.factory ? 2U : 1U) + one.aside);
    }
}

TEST_F(SettingsFilesTest, EitherFileIsReadByItself)
{
    m_folder.Write("user.xml", "<Module><Colour>blue</Colour></Module>");
    EXPECT_NE(m_settings.LoadCurrentSettingsNode(), nullptr);
    EXPECT_EQ(m_settings.LoadFabricSettingsNode(), nullptr);
    // A second damage within the second takes nothing from the first.
    m_folder.Write("factory.xml", m_factory);
    for (int damage = 0; damage < 3; ++damage) {
        m_folder.Write("user.xml", S_damaged);
        const auto node = m_settings.LoadCurrentSettingsNode();
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(static_cast<const std::string&>((*node)["Colour"]), "red");
    }
    EXPECT_EQ(KeptAside().size(), 3U);
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
