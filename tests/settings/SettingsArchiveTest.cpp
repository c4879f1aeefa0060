#include "settings/SettingsArchive.h"

#include "platform/CMemFile.h"
#include "platform/CodePage.h"
#include "support/Testing.h"

namespace {

/// What the action raises as std::runtime_error and nothing more special.
template<class Action>
std::string Refusal(Action a_action)
{
    try {
        a_action();
    } catch (const std::runtime_error& failure) {
        return typeid(failure) == typeid(std::runtime_error) ? failure.what() : "another exception";
    }
    return "nothing raised";
}

TEST(SettingsArchiveTest, AValueThatMayBeAbsentAsksForItsDirectionFirst)
{
    CMemFile file;
    CArchive storing(&file, CArchive::store);
    CArchive loading(&file, CArchive::load);
    const char* const text = "Niepoprawny kierunek serializacji "_cp1250;
    EXPECT_EQ(Refusal([&] { SettingsArchive::ReadOptionalTree(storing); }), text);
    EXPECT_EQ(Refusal([&] { SettingsArchive::WriteOptionalTree(loading, nullptr); }), text);
}

TEST(SettingsArchiveTest, ATreeTooDeepToReadIsNotWritten)
{
    Settings tree;
    Settings* node = &tree;
    for (int level = 0; level < 1100; ++level)
        node = &(*node)["x"];
    CMemFile file;
    CArchive storing(&file, CArchive::store);
    EXPECT_NE(Refusal([&] { SettingsArchive::WriteOptionalTree(storing, &tree); }), "nothing raised");
    storing.Close();
    EXPECT_EQ(file.GetLength(), 0U);
}

} // namespace
