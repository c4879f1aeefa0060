#include "settings/SettingsArchive.h"

#include "platform/CMemFile.h"
#include "platform/CodePage.h"
#include "support/RaisedText.h"
#include "support/Testing.h"

namespace {

/// What the action raises.
template<class Action>
std::string Refusal(Action a_action)
{
    return kalvento::tests::RaisedText<std::runtime_error>(a_action);
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
