#include "styles/StylesManager.h"

#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "styles/StyleTest.h"
#include "styles/StyleTextField.h"
#include "styles/StylesTools.h"
#include "support/LogWatch.h"
#include "support/Testing.h"

namespace {

/// Notes what it is asked, and answers what the test sets.
struct NotingCatalogue : ISkinCatalogue {
    explicit NotingCatalogue(std::vector<std::wstring>& a_calls) : calls(a_calls) {}

    bool Note(const std::wstring& a_call) const
    {
        calls.push_back(a_call);
        if (a_call.ends_with(L"raise"))
            throw std::runtime_error("raised");
        return true;
    }
    bool Load() override { return Note(L"Load"); }
    bool Exists(const std::wstring& a_name) const override { return Note(L"Exists " + a_name); }
    bool AddStyle(const std::wstring& a_name, const std::vector<ModuleWndBase*>& a_windows) override
    {
        return Note(L"Add " + std::to_wstring(a_windows.size()) + L" " + a_name);
    }
    bool Delete(const std::wstring& a_name) override { return Note(L"Delete " + a_name); }
    bool Save() const override { return Note(L"Save"); }
    void SetCurrent(const std::wstring& a_name) override { Note(L"Current " + a_name); }
    const std::wstring& GetCurrentStyleFile() const override { return file; }
    const std::wstring& GetCurrentStyleIni() const override { return ini; }

    std::vector<std::wstring>& calls;
    std::wstring file = L"x.cjstyle";
    std::wstring ini = L"x.ini";
};

class StylesManagerTest : public testing::Test {
protected:
    ~StylesManagerTest() override
    {
        manager.SetSkinCatalogue(nullptr);
        manager.RemoveInstanceCreator(StyleTextField::Creator());
        manager.RemoveInstanceCreator(StyleTest::Creator());
    }
    std::string Made(const std::wstring& a_name)
    {
        const auto style = manager.CreateStyleFromClassName(a_name);
        return style ? style->GetTypeName() : "none";
    }

    StylesManager& manager = StylesManager::Instance();
};

TEST_F(StylesManagerTest, TheLastCreatorOfANameMakesItsStyles)
{
    EXPECT_EQ(Made(L"StyleTest"), "none") << "nothing registers itself";
    manager.RegisterInstanceCreator(L"StyleTest", StyleTextField::Creator());
    manager.RegisterInstanceCreator(L"StyleTest", StyleTest::Creator());
    manager.RegisterInstanceCreator(L"Other", StyleTest::Creator());
    manager.RegisterInstanceCreator(L"StyleTextField", StyleTextField::Creator());
    EXPECT_EQ(Made(L"StyleTest"), "StyleTest");
    EXPECT_EQ(Made(L"styletest"), "none");
    manager.RemoveInstanceCreator(StyleTest::Creator());
    EXPECT_EQ(Made(L"StyleTest") + Made(L"Other") + Made(L"StyleTextField"), "nonenoneStyleTextField")
        << "a plug-in that goes takes all of its names with it";
}

TEST_F(StylesManagerTest, ANodeIsReadByTheTypeThatItNames)
{
    manager.RegisterInstanceCreator(L"StyleTextField", StyleTextField::Creator());
    manager.RegisterInstanceCreator(L"Misnamed", StyleTextField::Creator());
    StyleTextField written;
    written.SetBackgroundColorInc(0x123456, true);
    Settings node;
    written.Serialize(node, true);
    const auto read = StylesTools::LoadStyle(node);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetValue(StyleTextField::EBackgroundColorIncrease), 0x123456);
    EXPECT_TRUE(read->IsChangedParameter(StyleTextField::EBackgroundColorIncrease));

    EXPECT_FALSE(StylesTools::LoadStyle(Settings())) << "no type";
    node[StyleBase::TypeClass] = "StyleTest";
    EXPECT_FALSE(StylesTools::LoadStyle(node)) << "an unknown type";
    node[StyleBase::TypeClass] = "Misnamed";
    EXPECT_ANY_THROW(StylesTools::LoadStyle(node)) << "a type registered under another name than its own";
}

TEST_F(StylesManagerTest, TheCatalogueIsAskedUnderALockThatEndsWithTheCall)
{
    EXPECT_THROW(manager.LoadStyles(), std::bad_optional_access) << "before the paths are known";
    KalventoPaths::Initialize(L"KalventoStylesTest");
    const auto folder = WidePath::ToPath(KalventoPaths::Instance().GetNativeStylesPath());
    std::filesystem::remove_all(folder);
    std::vector<std::wstring> calls;
    manager.SetSkinCatalogue(std::make_unique<NotingCatalogue>(calls));
    EXPECT_FALSE(manager.LoadStyles());
    EXPECT_TRUE(calls.empty()) << "without a folder nothing is touched";

    std::filesystem::create_directories(folder);
    EXPECT_TRUE(manager.LoadStyles());
    EXPECT_THROW(manager.CheckIfApplicationStyleExist(L"raise"), std::runtime_error);
    EXPECT_THROW(manager.SetCurrentSkin(L"raise"), std::runtime_error);
    EXPECT_TRUE(manager.CheckIfApplicationStyleExist(L"a"));
    EXPECT_TRUE(manager.AddNewApplicationStyle(L"b", {nullptr, nullptr}));
    EXPECT_TRUE(manager.DeleteApplicationStyle(L"c"));
    EXPECT_TRUE(manager.SaveApplicationStyles());
    manager.SetCurrentSkin(L"d");
    EXPECT_EQ(manager.GetCurrentStyleFile() + manager.GetCurrentStyleIni(), L"x.cjstylex.ini");
    EXPECT_EQ(calls, (std::vector<std::wstring>{L"Load", L"Exists raise", L"Current raise", L"Exists a",
                                                L"Add 2 b", L"Delete c", L"Save", L"Current d"}));

    manager.SetSkinCatalogue(nullptr);
    const LogWatch log;
    EXPECT_FALSE(manager.LoadStyles() || manager.CheckIfApplicationStyleExist(L"a") ||
                 manager.AddNewApplicationStyle(L"b", {}) || manager.DeleteApplicationStyle(L"c") ||
                 manager.SaveApplicationStyles());
    manager.SetCurrentSkin(L"d");
    EXPECT_EQ(manager.GetCurrentStyleFile() + manager.GetCurrentStyleIni(), L"");
    EXPECT_EQ(log.lines.size(), 8U) << "each says that there is no catalogue";
    std::filesystem::remove_all(folder);
}

} // namespace
