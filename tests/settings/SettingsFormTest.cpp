#include "settings/Settings.h"

#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace {

constexpr const char* S_name = "zażółć.xml";

class SettingsFormTest : public testing::Test {
protected:
    std::wstring Path() const { return WidePath::ToWide(m_folder / S_name); }
    std::string ReadBytes() const { return m_folder.Read(S_name); }

    bool Load(const std::string& a_bytes)
    {
        m_folder.Write(S_name, a_bytes);
        return m_tree.LoadFromFile(Path(), "R");
    }

    TemporaryFolder m_folder;
    Settings m_tree;
};

std::string Nested(std::size_t a_levels)
{
    std::string text = "<R>";
    for (std::size_t level = 1; level < a_levels; ++level)
        text += "<a>";
    for (std::size_t level = 1; level < a_levels; ++level)
        text += "</a>";
    return text + "</R>";
}

} // namespace

TEST_F(SettingsFormTest, FileBytes)
{
    m_tree.m_version = 2;
    m_tree["Name"] = L"Zażółć & <gęś>";
    m_tree["Path"] = "C:\\new folder";
    m_tree["Lines"] = "a\n b ";
    m_tree["Flag"] = true;
    m_tree["Price"] = 0.1;
    m_tree["Rect"] = CRect{1, -2, 3, 4};
    m_tree["Empty"];
    m_tree["1 \xB3\n"] = 7U;
    m_tree["Node"] = -3;
    m_tree["Node"]["Child"] = "x";
    m_tree["List"].AddUnnamed() = 1;
    m_tree["List"].AddUnnamed()["item"] = 2;
    ASSERT_TRUE(m_tree.SaveToFile(Path(), "Root"));
    EXPECT_EQ(ReadBytes(), R"(<?xml version="1.0" encoding="UTF-8"?>
<Root version="2">
    <Name>Zażółć &amp; &lt;gęś&gt;</Name>
    <Path>C:\new folder</Path>
    <Lines escaped="true">a\n b\s</Lines>
    <Flag>true</Flag>
    <Price>0.1</Price>
    <Rect>1,-2,3,4</Rect>
    <Empty />
    <var key="1 ł\n">7</var>
    <Node value="-3">
        <Child>x</Child>
    </Node>
    <List>
        <item>1</item>
        <item>
            <var key="item">2</var>
        </item>
    </List>
</Root>
)");
    Settings read;
    ASSERT_TRUE(read.LoadFromFile(Path(), "Root"));
    EXPECT_EQ(read.ConvertToString(), m_tree.ConvertToString());
}

TEST_F(SettingsFormTest, TextBytes)
{
    m_tree["Name"] = L"\u017B \u03A9";
    m_tree["\xB3"] = "\t\\";
    m_tree.AddUnnamed().m_version = 1;
    EXPECT_EQ(m_tree.ConvertToString(),
              R"(<settings><Name escaped="true">\x{17B} \x{3A9}</Name>)"
              R"(<var key="\x{142}" escaped="true">\t\\</var><item version="1"/></settings>)");
    EXPECT_EQ(Settings().ConvertToString(), "<settings/>");
}

TEST_F(SettingsFormTest, RootNamesMayBeAnything)
{
    m_tree["Key"] = 1;
    for (const std::string_view name : {"item", "", "a b", "xml", "\xB3", "DataOperation"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(m_tree.SaveToFile(Path(), name));
        Settings read;
        EXPECT_TRUE(read.LoadFromFile(Path(), name));
        EXPECT_EQ(static_cast<int>(read["Key"]), 1);
        EXPECT_FALSE(read.LoadFromFile(Path(), "other"));
    }
}

TEST_F(SettingsFormTest, EditedByHand)
{
    ASSERT_TRUE(Load("\xEF\xBB\xBF<!-- mine --><!DOCTYPE R [<!ENTITY x \"y\">]>\r\n<R>\r\n"
                     "  <Text>\r\n    two\r\n    lines &#x17C;&amp;\r\n  </Text><!-- here -->\r\n"
                     "  <Raw><![CDATA[a<b]]></Raw> <Number value=' 5' /> <\xC5\xBC>6</\xC5\xBC>\r\n"
                     "</R>\r\n"));
    EXPECT_EQ(static_cast<std::wstring>(m_tree["Text"]), L"two\n    lines \u017C&");
    EXPECT_EQ(static_cast<std::string>(m_tree["Raw"]), "a<b");
    EXPECT_EQ(static_cast<std::string>(m_tree["Number"]), " 5");
    EXPECT_EQ(static_cast<int>(m_tree["\xBF"]), 6);
}

TEST_F(SettingsFormTest, DamageIsRefusedAndLeavesTheTree)
{
    m_tree["Before"] = 1;
    const std::string before = m_tree.ConvertToString();
    std::vector<std::string> damaged;
    std::istringstream texts("|<|plain|<R>|<R><a></R>|<R/><R/>|<R/>tail|<Q/>|<R>text<a/></R>|"
                             "<R><a/><a/></R>|<R value='a'>b</R>|<R version='x'/>|<R version=''/>|"
                             "<R unknown='1'/>|<R key='a'/>|<R><var/></R>|<R><\xCE\xA9/></R>|"
                             "<R escaped='yes'/>|<R>\xFF</R>|<R>\xED\xA0\x80</R>|<R>\x1F</R>|"
                             "<R>&#0;</R>|<R>&#xD800;</R>|<R>&#x110000;</R>|<R><![CDATA[</R>|"
                             "<R><!-- </R>");
    for (std::string text; std::getline(texts, text, '|');)
        damaged.push_back(text);
    for (const char* const value : {"\\", "\\q", "\\x{}", "\\x{123456789}", "\\x{12", "\\x{g}"})
        damaged.push_back("<R escaped='true'>" + std::string(value) + "</R>");
    damaged.insert(damaged.end(),
                   {"<R><a>1</a><var key='a'>2</var></R>", "<R version='2147483648'/>",
                    "<R version='1' version='1'/>", "<R><item key='a'/></R>", "<R>&#99999999999;</R>",
                    std::string("<R>\0</R>", 8), Nested(1001), Nested(300000), std::string(300000, '<')});
    for (const std::string& text : damaged) {
        SCOPED_TRACE(text.substr(0, 100));
        EXPECT_FALSE(Load(text));
        EXPECT_FALSE(m_tree.ConvertFromString(text));
        EXPECT_EQ(m_tree.ConvertToString(), before);
    }
    EXPECT_FALSE(m_tree.LoadFromFile(Path() + L".missing", "R"));
    EXPECT_FALSE(m_tree.LoadFromFile(WidePath::ToWide(m_folder.GetPath()), "R"));
    EXPECT_EQ(m_tree.ConvertToString(), before);
}

TEST_F(SettingsFormTest, EveryTruncationIsRefused)
{
    m_tree["Name"] = L"\u017B";
    m_tree["List"].AddUnnamed()["a b"] = "\n";
    ASSERT_TRUE(m_tree.SaveToFile(Path(), "R"));
    const std::string whole = ReadBytes();
    const std::size_t lastBracket = whole.rfind('>');
    for (std::size_t length = 0; length <= lastBracket; ++length) {
        SCOPED_TRACE(length);
        EXPECT_FALSE(Load(whole.substr(0, length)));
    }
    EXPECT_TRUE(Load(whole));
}

TEST_F(SettingsFormTest, ThousandLevelsAreTheLimitBothWays)
{
    Settings* node = &m_tree;
    for (int level = 1; level < 1000; ++level)
        node = &(*node)["a"];
    EXPECT_TRUE(m_tree.SaveToFile(Path(), "R"));
    EXPECT_TRUE(Settings().LoadFromFile(Path(), "R"));
    EXPECT_TRUE(Settings().ConvertFromString(m_tree.ConvertToString()));
    EXPECT_TRUE(Load(Nested(1000)));
    const std::string kept = ReadBytes();

    node = &m_tree;
    while (std::as_const(*node)["a"].Exists())
        node = &(*node)["a"];
    (*node)["a"];
    EXPECT_FALSE(m_tree.SaveToFile(Path(), "R"));
    EXPECT_EQ(m_tree.ConvertToString(), "");
    EXPECT_EQ(ReadBytes(), kept);
}
