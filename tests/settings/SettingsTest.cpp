#include "settings/Settings.h"

#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

namespace {

constexpr std::string_view S_root = "Root";

Settings ThroughText(const Settings& a_tree)
{
    Settings read;
    EXPECT_TRUE(read.ConvertFromString(a_tree.ConvertToString()));
    return read;
}

Settings ThroughFile(const Settings& a_tree)
{
    const TemporaryFolder folder;
    const std::wstring path = WidePath::ToWide(folder / "tree.xml");
    Settings read;
    EXPECT_TRUE(a_tree.SaveToFile(path, S_root));
    EXPECT_TRUE(read.LoadFromFile(path, S_root));
    return read;
}

void ForEachWay(const Settings& a_tree, const std::function<void(const Settings&)>& a_check)
{
    a_check(a_tree);
    const std::pair<const char*, Settings> ways[] = {
        {"copied", a_tree}, {"through text", ThroughText(a_tree)}, {"through a file", ThroughFile(a_tree)}};
    for (const auto& [way, tree] : ways) {
        SCOPED_TRACE(way);
        a_check(tree);
    }
}

std::uint64_t Bits(double a_value)
{
    return std::bit_cast<std::uint64_t>(a_value);
}

// Everything that a node can be read as.
auto ReadAsAll(const Settings& a_node)
{
    return std::tuple(static_cast<int>(a_node), static_cast<unsigned int>(a_node),
                      static_cast<unsigned long>(a_node), static_cast<std::int64_t>(a_node),
                      static_cast<std::uint64_t>(a_node), static_cast<std::int8_t>(a_node),
                      Bits(static_cast<double>(a_node)), static_cast<bool>(a_node),
                      static_cast<std::string>(a_node), static_cast<std::wstring>(a_node),
                      static_cast<CRect>(a_node), static_cast<CSize>(a_node));
}

std::string RandomBytes(std::mt19937_64& a_random, std::size_t a_length)
{
    std::string bytes(a_length, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(static_cast<unsigned char>(a_random()));
    return bytes;
}

} // namespace

// A pointer, a character or a flag must never land in the wrong kind of value.
static_assert(!std::is_assignable_v<Settings&, void*>);
static_assert(!std::is_assignable_v<Settings&, const std::vector<int>*>);
static_assert(!std::is_convertible_v<const Settings&, char>);
static_assert(!std::is_convertible_v<Settings, const std::string&>, "it would dangle");
static_assert(std::is_nothrow_move_constructible_v<Settings> && std::is_nothrow_swappable_v<Settings>);
static_assert(std::contiguous_iterator<Settings::const_iterator>);

TEST(SettingsTest, TextsAndKeysKeepEveryByte)
{
    std::vector<std::string> texts = {"",         "  two  ", "C:\\new\\table", "<&>\"']]>", "\\x{}",
                                      "<!-- -->", "&#0;",    "item",           "var",       "xmlns"};
    for (int byte = 0; byte < 256; ++byte)
        texts.emplace_back(1, static_cast<char>(static_cast<unsigned char>(byte)));
    std::mt19937_64 random(2); // NOLINT(bugprone-random-generator-seed)
    for (std::size_t length = 2; length < 200; ++length)
        texts.push_back(RandomBytes(random, length));

    Settings tree;
    for (const std::string& text : texts) {
        tree["Texts"].AddUnnamed() = text;
        tree["Keys"][text] = text;
        tree["Parents"][text] = text;
        tree["Parents"][text]["Child"] = true;
    }
    ForEachWay(tree, [&texts](const Settings& a_tree) {
        auto node = a_tree["Texts"].begin_unnamed();
        for (const std::string& text : texts) {
            const std::string& read = *node++;
            EXPECT_EQ(read, text);
            EXPECT_EQ(static_cast<std::string>(a_tree["Keys"][text]), text);
            EXPECT_EQ(static_cast<std::string>(a_tree["Parents"][text]), text);
            EXPECT_TRUE(static_cast<bool>(a_tree["Parents"][text]["Child"]));
        }
    });
}

// Whatever type is asked for: doubles keep every bit, texts every character.
TEST(SettingsTest, StoringChangesNoAnswer)
{
    Settings tree;
    tree.AddUnnamed();
    const auto add = [&tree](const auto& a_value) { tree.AddUnnamed() = a_value; };
    add(CRect{-1, 2, -3, 4});
    add(CSize{5, -6});
    add(false);
    add(true);
    for (const double number :
         {0.0, -0.0, 0.1, 0.5, -0.5, 2.5, -1.0, -3.9, 1e10, 1e15, 1e19, -1e19, 1e300, 123456789012345680000.0,
          std::ldexp(1.0, 63), -std::ldexp(1.0, 63), std::ldexp(1.0, 64), std::numeric_limits<double>::max()})
        add(number);
    // The least one, infinities and NaNs with a load.
    for (const std::uint64_t tail :
         {0x0ULL, 0x8000000000000ULL, 0x1ULL, 0x8000000000123ULL, 0xFFFFFFFFFFFFFULL})
        for (const std::uint64_t head : {0x0ULL, 0x7FF0000000000000ULL, 0xFFF0000000000000ULL})
            add(std::bit_cast<double>(head | tail));
    for (const std::int64_t number :
         {std::int64_t{-1}, std::int64_t{127}, std::int64_t{128}, std::int64_t{9007199254740993},
          std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
        add(number);
        add(static_cast<std::uint64_t>(number));
    }
    for (const std::string text :
         {"12", "+12", " 12", "0x10", "1e2", "1e999", "-0", "true", "True", "nan", "9223372036854775808",
          "1,2", "1, 2, 3, 4", "1,2,3,4,5", "1,,3,4", "99999999999,1"}) {
        add(text);
        add(std::wstring(text.begin(), text.end()));
    }
    for (const std::wstring& text :
         {std::wstring(L"Zażółć gęślą jaźń"), std::wstring(L" Ω "), std::wstring(L"a\0b", 3),
          std::wstring(L"\xD800"), std::wstring(L"\xDC00\xD800"), std::wstring(L"\xFFFE\xFFFF"),
          std::wstring(L"\x85\x2028"), std::wstring(L"\xFEFF"),
          std::wstring(1, static_cast<wchar_t>(0xFFFFFFFF))})
        add(text);
    std::mt19937_64 random(1); // NOLINT(bugprone-random-generator-seed): the same numbers on every run.
    for (int count = 0; count < 2000; ++count) {
        const auto number = std::bit_cast<double>(random());
        add(number);
        EXPECT_EQ(Bits(static_cast<double>(*(tree.end_unnamed() - 1))), Bits(number));
        add(std::wstring(2, static_cast<wchar_t>(static_cast<std::uint32_t>(random()) >> (count % 32))));
    }
    ForEachWay(tree, [&tree](const Settings& a_tree) {
        ASSERT_EQ(a_tree.GetUnnamedVariablesCount(), tree.GetUnnamedVariablesCount());
        auto expected = tree.begin_unnamed();
        for (auto node = a_tree.begin_unnamed(); node != a_tree.end_unnamed(); ++node, ++expected) {
            SCOPED_TRACE(static_cast<std::string>(*expected));
            EXPECT_EQ(ReadAsAll(*node), ReadAsAll(*expected));
        }
    });
}

TEST(SettingsTest, ValuesReadAsOtherTypes)
{
    const auto node = [](auto a_value) {
        Settings settings;
        settings = a_value;
        return settings;
    };
    EXPECT_EQ(static_cast<std::uint64_t>(node(~0ULL)), ~0ULL);
    EXPECT_EQ(static_cast<unsigned int>(node(-1)), 0U);
    EXPECT_EQ(static_cast<int>(node(3000000000U)), 0);
    EXPECT_EQ(static_cast<std::int8_t>(node(128)), 0);
    EXPECT_EQ(static_cast<int>(node(-2.9)), -2);
    EXPECT_EQ(static_cast<int>(node(L"42")), 42);
    EXPECT_EQ(static_cast<int>(node("4 2")), 0);
    EXPECT_EQ(static_cast<int>(node(true)), 1);
    EXPECT_FALSE(static_cast<bool>(node(std::nan(""))));
    const Settings wide = node(L"\u0142 \u03A9");
    EXPECT_EQ(static_cast<std::string>(wide), "\xB3 ?");
    EXPECT_EQ(static_cast<std::wstring>(node("\xB3")), L"\u0142");
    EXPECT_EQ(static_cast<CRect>(node("1, 2, 3, 4")), (CRect{1, 2, 3, 4}));
    EXPECT_EQ(static_cast<CRect>(node(CSize{1, 2})), CRect{});
}

TEST(SettingsTest, ReadingLeavesNoTrace)
{
    const Settings tree;
    const Settings& absent = tree["Nothing"];
    EXPECT_FALSE(absent.Exists());
    EXPECT_TRUE(tree.Exists());
    EXPECT_FALSE(tree["Nothing"]["Below"].Exists());
    EXPECT_EQ(absent.GetUnnamedVariablesCount(), 0U);
    EXPECT_EQ(absent.begin_unnamed(), absent.end_unnamed());
    EXPECT_EQ(ReadAsAll(absent), ReadAsAll(tree));
    EXPECT_EQ(static_cast<std::string>(absent), "");

    Settings copy;
    copy["Key"] = absent;
    EXPECT_TRUE(std::as_const(copy)["Key"].Exists());
    EXPECT_TRUE(std::as_const(ThroughFile(copy)["Key"]).Exists());
}

TEST(SettingsTest, ReferencesOutliveFurtherKeysAndMoves)
{
    Settings tree;
    Settings& first = tree["0"];
    Settings& element = tree["List"].AddUnnamed()["Deep"];
    for (int key = 1; key < 100; ++key) {
        tree[std::to_string(key)] = key;
        tree["List"].AddUnnamed();
    }
    EXPECT_EQ(&tree["0"], &first);
    EXPECT_EQ(static_cast<int>(tree["57"]), 57);
    const Settings moved = std::move(tree);
    element = 3;
    EXPECT_EQ(static_cast<int>((*moved["List"].begin_unnamed())["Deep"]), 3);
}

TEST(SettingsTest, NodeTakesItsOwnParts)
{
    Settings tree;
    tree = "a text that is too long to lie in the string itself";
    tree = static_cast<const std::string&>(tree);
    tree["Child"]["Grandchild"] = 7;
    tree["Copy"] = tree;
    EXPECT_EQ(static_cast<int>(tree["Copy"]["Child"]["Grandchild"]), 7);
    EXPECT_EQ(static_cast<std::string>(tree["Copy"]), "a text that is too long to lie in the string itself");

    tree = tree["Copy"];
    tree = std::move(tree["Child"]);
    EXPECT_EQ(static_cast<int>(tree["Grandchild"]), 7);
    EXPECT_FALSE(std::as_const(tree)["Copy"].Exists());
    Settings& self = tree;
    tree = std::move(self);
    EXPECT_EQ(static_cast<int>(tree["Grandchild"]), 7);
}

TEST(SettingsTest, DepthCostsNoStack)
{
    Settings tree;
    Settings* node = &tree;
    for (int level = 0; level < 300000; ++level)
        node = level % 2 == 0 ? &(*node)["Key"] : &node->AddUnnamed();
    *node = 9;
    const Settings copy = tree;
    EXPECT_TRUE(copy["Key"].Exists());
    EXPECT_EQ(copy.ConvertToString(), "");
    EXPECT_FALSE(copy.SaveToFile(L"/dev/null/never", S_root));
}
