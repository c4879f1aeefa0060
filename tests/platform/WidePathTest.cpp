#include "platform/WidePath.h"

#include "support/Testing.h"

TEST(WidePathTest, EveryFileNameSurvivesWideText)
{
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same names on every run.
    for (int count = 0; count < 2000; ++count) {
        std::string name;
        for (int byte = 0; byte < 12; ++byte)
            name += static_cast<char>(
                static_cast<unsigned char>(random() % 2 == 0 ? 'a' + random() % 26 : random()));
        ASSERT_EQ(WidePath::ToPath(WidePath::ToWide(name)).native(), name);
    }
    EXPECT_EQ(WidePath::ToPath(L"/Formuły QRL").native(), "/Formu\xC5\x82y QRL");
    EXPECT_EQ(WidePath::ToWide("\xB3"), L"\xDCB3");
    EXPECT_EQ(WidePath::ToPath(L"\xD800").native(), "\xEF\xBF\xBD");
}
