#include "velo/NumberFormatter.h"

#include "support/Testing.h"

namespace {

std::wstring Format(double a_value, int a_minimum, int a_maximum)
{
    std::wstring text = L"left from before";
    VeloTools::NumberFormatter().SlowFormat(text, {}, nullptr, 0, a_value, static_cast<EPrecision>(a_minimum),
                                            static_cast<EPrecision>(a_maximum));
    return text;
}

// The blanks between the groups shown as '_'.
std::wstring Shown(double a_value, int a_minimum, int a_maximum)
{
    std::wstring text = Format(a_value, a_minimum, a_maximum);
    std::replace(text.begin(), text.end(), L'\u00A0', L'_');
    return text;
}

} // namespace

TEST(NumberFormatterTest, PolishNumbers)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const std::tuple<double, int, int, std::wstring> cases[] = {
        {0.0, -1, -1, L"0"},
        {-0.0, 2, 2, L"0,00"},
        {12.3, 2, 4, L"12,30"},
        {12.3456, 2, 4, L"12,3456"},
        {12.30001, 0, 4, L"12,3"},
        {1234.5, 2, 2, L"1_234,50"},
        {-1234567.5, 2, 2, L"-1_234_567,50"},
        {999999.995, 2, 2, L"1_000_000,00"},
        {1e21, -1, -1, L"1_000_000_000_000_000_000_000"},
        {1e-7, -1, -1, L"0,0000001"},
        {5e-324, -1, 2, L"0"},
        {1.005, 2, 2, L"1,01"}, // below it in binary, a half in decimal
        {-1.005, 2, 2, L"-1,01"},
        {0.5, 0, 0, L"1"},
        {-0.5, 0, 0, L"-1"},
        {0.05, 1, 1, L"0,1"},
        {-0.004, 2, 2, L"0,00"},
        {0.0004, 0, 3, L"0"},
        {0.0005, 0, 3, L"0,001"},
        {1.5, 4, 2, L"1,50"},
        {1.23456, -1, 2, L"1,23"},
        {1.23456, 1, -1, L"1,23456"},
        {std::nan(""), 2, 2, L"-"},
        {infinity, 2, 2, L"\u221E"},
        {-infinity, 2, 2, L"-\u221E"},
    };
    for (const auto& [value, minimum, maximum, text] : cases) {
        SCOPED_TRACE(testing::Message() << value << " " << minimum << " " << maximum);
        EXPECT_EQ(Shown(value, minimum, maximum), text);
    }
}

TEST(NumberFormatterTest, WithoutBoundsReadsBackToTheSameDouble)
{
    std::mt19937_64 random(1); // NOLINT(bugprone-random-generator-seed): the same numbers on every run.
    for (int count = 0; count < 2000; ++count) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value))
            continue;
        std::string plain;
        for (const wchar_t character : Format(value, -1, -1)) {
            if (character != L'\u00A0')
                plain += character == L',' ? '.' : static_cast<char>(character);
        }
        ASSERT_EQ(std::strtod(plain.c_str(), nullptr), value) << plain;
    }
}

TEST(NumberFormatterTest, GreatWishesTakeNoMemory)
{
    EXPECT_LT(Format(1.5, std::numeric_limits<std::int32_t>::max(), -1).size(), 2000U);
    EXPECT_EQ(Format(1.5, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::min()),
              L"1,5");
}

TEST(NumberFormatterTest, DropsPlacesUntilItFits)
{
    VeloTools::NumberFormatter::SetTextWidth(
        [](std::wstring_view a_text, HFONT) { return static_cast<unsigned int>(10 * a_text.size()); });
    int object = 0;
    const auto font = reinterpret_cast<HFONT>(&object);
    const auto fit = [font](unsigned int a_width, int a_minimum) {
        std::wstring text;
        VeloTools::NumberFormatter().SlowFormat(text, L" zł", font, a_width, 1.9876,
                                                static_cast<EPrecision>(a_minimum), EPrecisionNone);
        return text;
    };
    EXPECT_EQ(fit(0, 0), L"1,9876 zł");
    EXPECT_EQ(fit(90, 0), L"1,9876 zł");
    EXPECT_EQ(fit(89, 0), L"1,988 zł");
    EXPECT_EQ(fit(1, 1), L"2,0 zł");
    EXPECT_EQ(fit(1, 0), L"2 zł");
    VeloTools::NumberFormatter::SetTextWidth(nullptr);
}
