#include "platform/SharedLibrary.h"

#include "support/TemporaryFolder.h"
#include "support/Testing.h"

using kalvento::internal::SharedLibrary;

TEST(SharedLibraryTest, FindsWhatTheLibraryHas)
{
    SharedLibrary library;
    ASSERT_EQ(library.Load("libm.so.6"), "");
    const auto distance = reinterpret_cast<double (*)(double)>(library.Find("fabs"));
    ASSERT_NE(distance, nullptr);
    EXPECT_EQ(distance(-27.0), 27.0);
    EXPECT_EQ(library.Find("there is no such symbol"), nullptr);
    library.Unload();
    library.Unload();
}

TEST(SharedLibraryTest, TellsWhichFileItCannotUse)
{
    const TemporaryFolder folder;
    folder.Write("text.so", "no library");
    for (const auto& path : {folder / "text.so", folder / "missing.so"}) {
        SharedLibrary library;
        EXPECT_TRUE(library.Load(path).starts_with(path.native() + ": "));
        library.Unload();
    }
}
