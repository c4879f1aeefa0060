#include "host/ModuleStates.h"

#include "platform/WidePath.h"
#include "support/IdleConsumer.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace kalvento::host {
namespace {

struct Module : IdleConsumer {
    explicit Module(std::wstring a_name, int a_version = 1)
        : IdleConsumer(std::move(a_name)), version(a_version)
    {}
    void SerialiseState(Settings& a_settings) const override { a_settings["Value"] = value; }
    void UnserialiseState(const Settings& a_settings) override
    {
        if (raises)
            throw std::runtime_error("no such window");
        value = a_settings["Value"];
    }
    int GetCurrentSettingsVersion() const override { return version; }
    bool UpdateOldVersionUserSettings(const Settings& a_old, Settings& a_new) const override
    {
        a_new["Value"] = static_cast<int>(a_old["Value"]) + 100;
        return true;
    }
    int version;
    int value = 0;
    bool raises = false;
};

class ModuleStatesTest : public testing::Test {
protected:
    void Save(const std::wstring& a_name, int a_value, int a_version = 1) const
    {
        Module module(a_name, a_version);
        module.value = a_value;
        ModuleStates states(m_file);
        states.Take(module);
        EXPECT_TRUE(states.Save());
    }
    int Load(const std::wstring& a_name, int a_version = 1) const
    {
        Module module(a_name, a_version);
        ModuleStates(m_file).GiveBack(module);
        return module.value;
    }
    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder / "states.xml";
};

TEST_F(ModuleStatesTest, EachModuleGetsItsOwnBack)
{
    Save(L"Żółw / 1", 7);
    Save(L"Other", 8);
    Save(L"Żółw / 1", 9);
    EXPECT_EQ(Load(L"Żółw / 1"), 9);
    EXPECT_EQ(Load(L"Other"), 8) << "it didn't run when the last one was saved";
    EXPECT_EQ(Load(L"Unknown"), 0);
}

TEST_F(ModuleStatesTest, AnOlderStateIsConvertedAndANewerOneIsLeftAlone)
{
    Save(L"M", 7, 2);
    EXPECT_EQ(Load(L"M", 3), 107);
    Module older(L"M", 1);
    ModuleStates states(m_file);
    states.GiveBack(older);
    EXPECT_EQ(older.value, 0);
    states.Take(older);
    EXPECT_TRUE(states.Save());
    EXPECT_EQ(Load(L"M", 2), 7);
}

TEST_F(ModuleStatesTest, WhatCanNotBeReadIsKeptAside)
{
    Save(L"M", 7);
    Save(L"Other", 8);
    const std::string written = m_folder.Read("states.xml");
    Module module(L"M");
    module.raises = true;
    {
        ModuleStates states(m_file);
        EXPECT_THROW(states.GiveBack(module), std::runtime_error);
        module.value = 1;
        states.Take(module);
        EXPECT_EQ(m_folder.Read("states.xml"), written) << "nothing is written over it yet";
        EXPECT_TRUE(states.Save());
    }
    EXPECT_EQ(m_folder.CountFiles(), 2U);
    EXPECT_EQ(Load(L"M"), 1);
    EXPECT_EQ(Load(L"Other"), 8);

    m_folder.Write("states.xml", written.substr(0, written.size() / 2));
    EXPECT_FALSE(ModuleStates(m_file).GetNotice().empty());
    EXPECT_EQ(m_folder.CountFiles(), 2U) << "both aside";
    EXPECT_EQ(Load(L"Other"), 0);
}

TEST_F(ModuleStatesTest, AFileOfALaterProgramIsLeftAlone)
{
    Settings later;
    later.m_version = 99;
    later["New"] = 1;
    ASSERT_TRUE(later.SaveToFile(WidePath::ToWide(m_file), "ModuleStates"));
    const std::string written = m_folder.Read("states.xml");
    ModuleStates states(m_file);
    Module module(L"M");
    module.value = 1;
    states.Take(module);
    EXPECT_FALSE(states.Save());
    EXPECT_EQ(m_folder.Read("states.xml"), written);
}

} // namespace
} // namespace kalvento::host
