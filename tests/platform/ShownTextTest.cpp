#include "platform/ShownText.h"

#include "platform/CodePage.h"
#include "support/Testing.h"

#include <utility>

namespace ShownText = kalvento::internal::ShownText;

TEST(ShownTextTest, WhatActsOnATerminalShowsAsAnEscape)
{
    const std::pair<std::string, std::string> cases[] = {
        {"Żółw 5 € C:\\n", "Żółw 5 € C:\\n"},
        {"a\nb\r\tc", "a\\nb\\r\\tc"},
        {"\x1b[31mred\x07\x7f", "\\x1B[31mred\\x07\\x7F"},
        {"\xC2\x9B"
         "2J",
         "\\x9B2J"},                         // the control that one byte begins a sequence with
        {"\x9B\xFF\xC5", "\\x9B\\xFF\\xC5"}, // no UTF-8
        {"gpj.\xE2\x80\xAE\xE2\x81\xA6", "gpj.\\u{202E}\\u{2066}"}, // the other direction
        {"\xE2\x80\xA8\xD8\x9C\xF3\xA0\x81\x81", "\\u{2028}\\u{61C}\\u{E0041}"},
        {std::string("\0", 1), "\\x00"},
        {"\xF0\x9F\x93\x88", "\xF0\x9F\x93\x88"}};
    for (const auto& [text, shown] : cases) {
        SCOPED_TRACE(shown);
        EXPECT_EQ(ShownText::OneLine(text), shown);
    }
    EXPECT_EQ(ShownText::Lines("a\tb\r\n\x1b"), "a\tb\\r\n\\x1B");
}

// A letter that a flush cuts in two is the letter again.
TEST(ShownTextTest, KnowsTheBeginOfALetter)
{
    const std::string text = "a\xC5\x82\xE2\x82\xAC\xF0\x9F\x93\x88z";
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        const std::string_view begin = std::string_view(text).substr(0, cut);
        EXPECT_EQ(cut - ShownText::CountCutBytes(begin), CodePage::FindMalformedUtf8(begin)) << cut;
    }
    EXPECT_EQ(ShownText::CountCutBytes("\x82\x82\x82\x82"), 0U);
}
