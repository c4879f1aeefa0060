#include "platform/CodePage.h"

#include "support/Testing.h"

TEST(CodePageTest, EveryByteStringSurvivesWideText)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(static_cast<unsigned char>(byte));
    const std::wstring wide = CodePage::Cp1250ToWide(all);
    EXPECT_EQ(CodePage::WideToCp1250(wide), all);
    EXPECT_TRUE(CodePage::FitsCp1250(wide));
    EXPECT_EQ(CodePage::Cp1250ToUtf8(all), CodePage::WideToUtf8(wide));
    EXPECT_EQ(CodePage::Cp1250ToWide("za\xBF\xF3\xB3\xE6 \x80"), L"zażółć €");
}

TEST(CodePageTest, WideTextLosesOnlyWhatTheCodePageLacks)
{
    std::wstring text = L"ąΩz";
    for (const std::uint32_t code : {0xD800U, 0x1F600U, 0x10105U, 0xFFFFFFFFU})
        text += static_cast<wchar_t>(code);
    EXPECT_EQ(CodePage::WideToCp1250(text), "\xB9?z????");
    EXPECT_FALSE(CodePage::FitsCp1250(text));
}

TEST(CodePageTest, MalformedUtf8BecomesReplacements)
{
    const std::tuple<std::string, std::wstring, std::size_t> cases[] = {
        {"", L"", 0},
        {"a\xC5\xBC", L"aż", 3},
        {"\xF0\x9F\x98\x80", {static_cast<wchar_t>(0x1F600)}, 4},
        {"a\x80z", L"a\xFFFDz", 1},
        {"\xC5", L"\xFFFD", 0},
        {"\xC5z", L"\xFFFDz", 0},
        {"\xC0\x80", L"\xFFFD\xFFFD", 0},           // overlong
        {"\xE0\x80\x80", L"\xFFFD\xFFFD\xFFFD", 0}, // overlong
        {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD", 0}, // a surrogate
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD", 0},
        {"\xE2\x82z", L"\xFFFDz", 0}, // one broken sequence is one replacement
        {"\xF0\x9F\x98", L"\xFFFD", 0},
        {"ok\xFF", L"ok\xFFFD", 2},
    };
    for (const auto& [utf8, wide, malformed] : cases) {
        SCOPED_TRACE(utf8);
        EXPECT_EQ(CodePage::Utf8ToWide(utf8), wide);
        EXPECT_EQ(CodePage::FindMalformedUtf8(utf8), malformed);
    }
}

TEST(CodePageTest, EveryCodePointSurvivesUtf8AndUtf16)
{
    for (std::uint32_t code = 0; code <= 0x10FFFF; code += code < 0x3000 ? 1 : 37) {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue;
        const std::wstring text(1, static_cast<wchar_t>(code));
        ASSERT_EQ(CodePage::Utf8ToWide(CodePage::WideToUtf8(text)), text) << code;
        ASSERT_EQ(CodePage::Utf16ToWide(CodePage::WideToUtf16(text)), text) << code;
    }
    EXPECT_EQ(
        CodePage::WideToUtf8(std::wstring{static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)}),
        "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CodePageTest, EveryRunOfUnitsSurvivesWideText)
{
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same units on every run.
    for (int count = 0; count < 2000; ++count) {
        std::u16string units;
        for (int unit = 0; unit < 8; ++unit)
            units +=
                static_cast<char16_t>(random() % 2 == 0 ? 0xD800 + random() % 0x800 : random() % 0x10000);
        ASSERT_EQ(CodePage::WideToUtf16(CodePage::Utf16ToWide(units)), units);
    }
    EXPECT_EQ(CodePage::WideToUtf16(std::wstring{static_cast<wchar_t>(0x1F600)}), u"\xD83D\xDE00");
}
