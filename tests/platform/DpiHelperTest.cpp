#include "platform/DpiHelper.h"

#include "support/Testing.h"

TEST(DpiHelperTest, StoredNumbersSurviveEveryScreen)
{
    DpiHelper helper;
    for (int dpi = 96; dpi < 500; ++dpi) {
        helper.SetDpi(dpi);
        for (std::int32_t x = -300; x <= 300; ++x)
            ASSERT_EQ(helper.UnscaleX(helper.ScaleX(x)), x) << dpi;
    }
}

TEST(DpiHelperTest, HalvesGoAwayFromZeroAndNothingWraps)
{
    DpiHelper helper;
    helper.SetDpi(144);
    EXPECT_EQ(helper.ScaleX(1), 2);
    EXPECT_EQ(helper.ScaleY(-1), -2);
    EXPECT_EQ(helper.Scale(CRect{-1, 2, 3, 5}), (CRect{-2, 3, 5, 8}));
    EXPECT_EQ(helper.Unscale(CSize{4, -5}), (CSize{3, -3}));
    EXPECT_EQ(helper.ScaleX(std::numeric_limits<std::int32_t>::max()),
              std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(helper.ScaleX(std::numeric_limits<std::int32_t>::min()),
              std::numeric_limits<std::int32_t>::min());
    helper.SetDpi(-5);
    EXPECT_EQ(helper.GetDpi(), 96);
    EXPECT_EQ(helper.ScaleX(7), 7);
}
