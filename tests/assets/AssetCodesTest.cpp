#include "assets/Asset.h"
#include "assets/AssetAdditProp.h"
#include "assets/AssetCategory.h"
#include "assets/AssetSegment.h"
#include "assets/AssetStatus.h"
#include "assets/AssetTools.h"
#include "support/Testing.h"
#include "velo/CharIntConverter.h"
#include "velo/String.h"

namespace {

struct Code {
    std::string_view code;
    std::wstring_view label;
};

// The codes as the data feed sends them, and the texts that users know.
constexpr Code S_categories[] = {
    {"A", L"Akcja"},         {"F", L"Kontrakt terminowy"},   {"I", L"Index"}, {"O", L"Obligacja"},
    {"T", L"Tracker (ETF)"}, {"W", L"Warrant / Certyfikat"}, {"X", L"Opcja"}, {"Y", L"Opcja"}};

constexpr Code S_statuses[] = {{"1", L"po sesji"},
                               {"2", L"równoważenie"},
                               {"3", L"zawieszony"},
                               {"4", L"wznowienie obrotu"},
                               {"A", L"przed zamknięciem"},
                               {"B", L"zamknięcie"},
                               {"C", L"poranny monitoring"},
                               {"E", L"interwencja animatora"},
                               {"F", L"monitoring wieczorny"},
                               {"I", L"zawieszenie obrotu"},
                               {"N", L"podstawowy monitoring"},
                               {"O", L"otwarcie"},
                               {"P", L"przed otwarciem"},
                               {"R", L"dogrywka"},
                               {"S", L"sesja"},
                               {"T", L"status przejściowy"},
                               {"Z", L"system zamknięty"},
                               {"2B", L"(D) równoważenie"},
                               {"2H", L"(G) równoważenie"},
                               {"2P", L"równoważenie"},
                               {"3D", L"zawieszony"},
                               {"3Z", L"(O) zawieszony"}};

namespace CharIntConverter = VeloTools::CharIntConverter;

/// Decodes every code of one or two bytes: those of the table give their bytes as a number, all others give 0.
template<class Decode, std::size_t Count>
void ExpectExactly(Decode a_decode, const Code (&a_codes)[Count])
{
    std::set<std::uint32_t> known;
    for (const Code& code : a_codes) {
        SCOPED_TRACE(std::string(code.code));
        EXPECT_EQ(a_decode(code.code), CharIntConverter::ToInt(code.code));
        known.insert(CharIntConverter::ToInt(code.code));
    }
    for (unsigned int number = 1; number < 0x10000; ++number) {
        const std::string code = CharIntConverter::ToString(number);
        if (!known.contains(number)) {
            ASSERT_EQ(a_decode(code), 0U) << number;
        }
    }
    for (const std::string_view code : {std::string_view(), std::string_view(VeloTools::String::NullString()),
                                        std::string_view("ABC"), std::string_view("2BBB")})
        EXPECT_EQ(a_decode(code), 0U) << code;
    EXPECT_THROW(a_decode("ABCDE"), std::length_error);
}

TEST(AssetCategoryTest, OnlyItsCodesAreKnown)
{
    ExpectExactly([](std::string_view a_code) { return AssetCategory::ToCategoyValue(a_code); },
                  S_categories);
    for (const Code& code : S_categories)
        EXPECT_EQ(AssetCategory::ValueToLabel(AssetCategory::ToCategoyValue(code.code)), code.label);
    EXPECT_EQ(AssetCategory::ValueToLabel(static_cast<AssetCategory::Value>(66)), L"");
}

TEST(AssetStatusTest, OnlyItsCodesAreKnown)
{
    ExpectExactly([](std::string_view a_code) { return AssetStatus::ToStatusValue(a_code); }, S_statuses);
    for (const Code& code : S_statuses) {
        const auto value = AssetStatus::ToStatusValue(code.code);
        EXPECT_EQ(AssetStatus::ValueToCode(value), code.code);
        EXPECT_EQ(AssetStatus::ValueToLabel(value), code.label);
    }
    const auto unknown = static_cast<AssetStatus::Value>(0x5151);
    EXPECT_EQ(AssetStatus::ValueToLabel(unknown), L"");
    EXPECT_EQ(AssetStatus::ValueToCode(unknown), "QQ");
    EXPECT_EQ(AssetStatus::ValueToCode(AssetStatus::StatusUnknown), "");
}

TEST(AssetSegmentTest, SeveralCodesFallOnOneSegment)
{
    using namespace AssetSegment;
    for (const char* code : {"IN", "LE", "NM"})
        EXPECT_EQ(ToSegmentValue(code), SegmentInstruments) << code;
    EXPECT_EQ(ToSegmentValue("IX"), SegmentIndices);
    EXPECT_EQ(ToSegmentValue("DN"), SegmentDerivatives);
    for (const char* code : {"", "(null)", "I", "NI", "in", "INX", "LEXX"})
        EXPECT_EQ(ToSegmentValue(code), SegmentUnknown) << code;
    EXPECT_THROW(ToSegmentValue("INDEX"), std::length_error);
}

TEST(AssetToolsTest, OrdersAreForInstrumentsAndDerivatives)
{
    const std::tuple<const char*, AssetSegment::Value, bool, bool, bool> cases[] = {
        {"KGHM", AssetSegment::SegmentInstruments, true, true, false},
        {"FW20", AssetSegment::SegmentInstruments, true, true, false},
        {"WIG20", AssetSegment::SegmentIndices, false, true, false},
        {"FW20H21", AssetSegment::SegmentDerivatives, true, false, true},
        {"FW20", AssetSegment::SegmentDerivatives, false, false, true},
        {"KGHM", AssetSegment::SegmentUnknown, false, false, false},
        {"KGHM", static_cast<AssetSegment::Value>(4), false, false, false},
    };
    for (const auto& [shortName, segment, transaction, cash, contract] : cases) {
        SCOPED_TRACE(std::string(shortName) + " " + std::to_string(segment));
        const AssetAdditProp properties(L"", L"", L"", L"", 0.0, EPrecisionNone, EPrecisionNone,
                                        AssetCategory::CategoryUnknown, segment, std::nullopt);
        const Asset asset(nullptr, shortName, "FW20", "GPW", "PL1");
        EXPECT_EQ(AssetTools::IsTransactionAsset(asset, properties), transaction);
        EXPECT_EQ(properties.IsFromCashMarket(), cash);
        EXPECT_EQ(properties.IsFromContractMarket(), contract);
    }
}

} // namespace
