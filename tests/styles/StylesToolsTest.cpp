#include "styles/StylesTools.h"

#include "settings/Settings.h"
#include "styles/StyleTest.h"
#include "styles/StyleTextField.h"
#include "support/Testing.h"

namespace {

using namespace StylesTools;

TEST(StylesToolsTest, FontSizesGoUpAndDownOneLadder)
{
    const long sizes[] = {6, 8, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36, 48, 72};
    for (long height = -100; height <= 100; ++height) {
        SCOPED_TRACE(height);
        const auto* const above = std::ranges::upper_bound(sizes, std::abs(height));
        const auto* const notBelow = std::ranges::lower_bound(sizes, std::abs(height));
        EXPECT_EQ(ChangeFontSize(EFontIncrease, height, 5), above != std::end(sizes) ? -*above : height);
        EXPECT_EQ(ChangeFontSize(EFontDecrease, height, 5), notBelow != sizes ? -notBelow[-1] : height);
        EXPECT_EQ(ChangeFontSize(EFontReset, height, 5), 5);
        EXPECT_EQ(ChangeFontSize(static_cast<FontCommand>(3), height, 5), 5);
    }
    const long lowest = std::numeric_limits<long>::min();
    EXPECT_EQ(ChangeFontSize(EFontIncrease, lowest, 5), lowest);
    EXPECT_EQ(ChangeFontSize(EFontDecrease, lowest, 5), -72);
}

TEST(StylesToolsTest, AStepIsAChangeAndAResetTakesTheMarksAway)
{
    const auto skin = std::make_shared<StyleTextField>();
    skin->SetFontHeight(-16, false);
    const auto style = std::make_shared<StyleTextField>();
    const std::shared_ptr<StyleBase> base = style;
    ChangeFontSize(EFontIncrease, skin, base);
    EXPECT_EQ(style->GetRowFontHeight(), -14);
    EXPECT_TRUE(style->IsChangedParameter(StyleTextField::EFontHeight));
    EXPECT_FALSE(style->IsChangedParameter(StyleTextField::EFontFace));
    ChangeFontSize(EFontDecrease, skin, base);
    EXPECT_TRUE(style->IsChangedParameter(StyleTextField::EFontHeight))
        << "back where it was, by the user's hand";
    ChangeFontSize(EFontReset, skin, base);
    EXPECT_EQ(style->GetRowFontHeight(), -16);
    EXPECT_FALSE(style->HasChangedParameters());

    ChangeFontSize(EFontIncrease, std::shared_ptr<StyleBase>(std::make_shared<StyleTest>()), base);
    ChangeFontSize(EFontIncrease, std::shared_ptr<StyleTextField>(), style);
    ChangeFontSize(EFontIncrease, style, std::shared_ptr<StyleTextField>());
    EXPECT_EQ(style->GetRowFontHeight(), -16) << "one of the two is no style with a font";
}

TEST(StylesToolsTest, WithoutAStyleNothingIsWritten)
{
    Settings node;
    SafeSerialize(nullptr, node, true);
    SafeSerializeTemplate(nullptr, node);
    SafeUnserialize(nullptr, node);
    SafeReleaseStyle(nullptr);
    EXPECT_EQ(node.ConvertToString(), Settings().ConvertToString());
    const auto style = std::make_shared<StyleTest>();
    EXPECT_NO_THROW(SafeUnserialize(style, std::as_const(node)["absent"]));
    EXPECT_ANY_THROW(SafeUnserialize(style, node)) << "a node that is there must name the type";
    SafeSerializeTemplate(style, node);
    EXPECT_NO_THROW(SafeUnserialize(style, node));
}

TEST(StylesToolsTest, ColorsArePaddedWithBlanks)
{
    for (const auto& [color, text] : {std::pair(0x000000U, L"# 0 0 0"), std::pair(0x0A1BFFU, L"#ff1b a"),
                                      std::pair(0xFF0000FFU, L"#ff 0 0")})
        EXPECT_EQ(GetHexRGBColor(color), text);
}

} // namespace
