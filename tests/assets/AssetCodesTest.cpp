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
    std::uint32_t number;
    std::string_view code;
    std::wstring_view label;
};

// The codes as the data feed sends them, and the texts that users know.
constexpr Code S_categories[] = {
    {65, "A", L"Akcja"},         {70, "F", L"Kontrakt terminowy"},
    {73, "I", L"Index"},         {79, "O", L"Obligacja"},
    {84, "T", L"Tracker (ETF)"}, {87, "W", L"Warrant / Certyfikat"},
    {88, "X", L"Opcja"},         {89, "Y", L"Opcja"},
};

constexpr Code S_statuses[] = {
    {49, "1", L"po sesji"},
    {50, "2", L"równoważenie"},
    {51, "3", L"zawieszony"},
    {52, "4", L"wznowienie obrotu"},
    {65, "A", L"przed zamknięciem"},
    {66, "B", L"zamknięcie"},
    {67, "C", L"poranny monitoring"},
    {69, "E", L"interwencja animatora"},
    {70, "F", L"monitoring wieczorny"},
    {73, "I", L"zawieszenie obrotu"},
    {78, "N", L"podstawowy monitoring"},
    {79, "O", L"otwarcie"},
    {80, "P", L"przed otwarciem"},
    {82, "R", L"dogrywka"},
    {83, "S", L"sesja"},
    {84, "T", L"status przejściowy"},
    {90, "Z", L"system zamknięty"},
    {12866, "2B", L"(D) równoważenie"},
    {12872, "2H", L"(G) równoważenie"},
    {12880, "2P", L"równoważenie"},
    {13124, "3D", L"zawieszony"},
    {13146, "3Z", L"(O) zawieszony"},
};

/// Decodes every code of one or two bytes: those of the table give their numbers, all others give 0.
template<class Decode, std::size_t Count>
void ExpectExactly(Decode a_decode, const Code (&a_codes)[Count])
{
    std::set<std::uint32_t> known;
    for (const Code& code : a_codes) {
        SCOPED_TRACE(std::string(code.code));
        EXPECT_EQ(a_decode(code.code), code.number);
        known.insert(code.number);
    }
    for (unsigned int number = 1; number < 0x10000; ++number) {
        const std::string code = VeloTools::CharIntConverter::ToString(number);
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
        EXPECT_EQ(AssetCategory::ValueToLabel(static_cast<AssetCategory::Value>(code.number)), code.label);
    EXPECT_EQ(AssetCategory::ValueToLabel(static_cast<AssetCategory::Value>(66)), L"");
}

TEST(AssetStatusTest, OnlyItsCodesAreKnown)
{
    ExpectExactly([](std::string_view a_code) { return AssetStatus::ToStatusValue(a_code); }, S_statuses);
    for (const Code& code : S_statuses) {
        const auto value = static_cast<AssetStatus::Value>(code.number);
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
