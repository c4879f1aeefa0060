#include "support/Testing.h"
#include "velo/CharIntConverter.h"
#include "velo/ConverterMultiByteToWideChar.h"
#include "velo/String.h"
#include "velo/UniqueMessage.h"

#include <boost/json.hpp>

using namespace VeloTools;

TEST(CharIntConverterTest, PackingAndItsInverse)
{
    EXPECT_EQ(CharIntConverter::ToInt(""), 0U);
    EXPECT_EQ(CharIntConverter::ToInt("A"), 0x41U);
    EXPECT_EQ(CharIntConverter::ToInt("ABCD"), 0x41424344U);
    EXPECT_EQ(CharIntConverter::ToInt("\xFF"), 0xFFFFFFFFU); // widened with its sign
    EXPECT_THROW(CharIntConverter::ToInt("ABCDE"), std::length_error);
    for (const std::string code : {"", "A", "AB", "ABC", "ABCD", "~~~~"})
        EXPECT_EQ(CharIntConverter::ToString(CharIntConverter::ToInt(code)), code);
    EXPECT_EQ(CharIntConverter::ToString(0x410042), std::string("A\0B", 3));
    EXPECT_EQ(CharIntConverter::ToString(0xFFFFFFFF), "\xFF\xFF\xFF\xFF");
}

TEST(StringTest, LowerCaseIsThatOfTheCodePage)
{
    const std::wstring upper = L"AZ ĄĆĘŁŃÓŚŹŻ ÀÁÂĂÄĹÇČÉËĚÍÎĎĐŇÔŐÖŘŮÚŰÜÝŢ ŠŤŽŞĽ ŔŽ 09[`{×ß÷";
    const std::wstring lower = L"az ąćęłńóśźż àáâăäĺçčéëěíîďđňôőöřůúűüýţ šťžşľ ŕž 09[`{×ß÷";
    EXPECT_EQ(String::ToLower(String::WideToAnsi(upper)), String::WideToAnsi(lower));
    for (int byte = 0; byte < 256; ++byte) {
        const std::string once =
            String::ToLower(std::string(1, static_cast<char>(static_cast<unsigned char>(byte))));
        EXPECT_EQ(String::ToLower(once), once);
    }
}

TEST(UniqueMessageTest, OneNumberForAName)
{
    const UniqueMessage first(L"ConnectToConsumerWindow");
    const UniqueMessage second(L"DisconnectFromConsumerWindow");
    EXPECT_EQ(first.GetNumber(), UniqueMessage(L"ConnectToConsumerWindow").GetNumber());
    EXPECT_NE(first.GetNumber(), second.GetNumber());
    EXPECT_GE(first.GetNumber(), 0xC000U);
    EXPECT_LE(second.GetNumber(), 0xFFFFU);
}
