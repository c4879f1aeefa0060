#include "styles/StyleTextField.h"

#include "platform/CodePage.h"
#include "platform/GdiObjects.h"
#include "settings/Settings.h"
#include "styles/StyleTest.h"
#include "support/RaisedText.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

namespace {

using Style = StyleTextField;
using Setter = void (Style::*)(COLORREF, bool);

constexpr Setter S_setters[] = {&Style::SetForegroundColorNormal,  &Style::SetBackgroundColorNormal,
                                &Style::SetForegroundColorInc,     &Style::SetBackgroundColorInc,
                                &Style::SetForegroundColorDec,     &Style::SetBackgroundColorDec,
                                &Style::SetForegroundColorNewItem, &Style::SetBackgroundColorNewItem};
constexpr int S_firstColor = Style::EForegroundColorNormal;
constexpr int S_lastColor = Style::EBackgroundColorNewItem;

LOGFONTW Font(const std::wstring& a_face, int a_height, int a_weight = FW_NORMAL)
{
    LOGFONTW font;
    font.SetFaceName(a_face);
    font.lfHeight = a_height;
    font.lfWeight = a_weight;
    return font;
}

/// What a style must hold, told as plainly as it can be.
struct Model {
    std::map<int, COLORREF> colors;
    LOGFONTW font;
    bool isTemplate = false;
    std::set<int> marks;

    bool IsMarked(int a_parameter) const { return isTemplate || marks.contains(a_parameter); }
    void Mark(int a_parameter, bool a_marked)
    {
        marks.erase(a_parameter);
        if (a_marked)
            marks.insert(a_parameter);
    }
    void SetFont(const LOGFONTW& a_font, std::optional<bool> a_mark)
    {
        const bool face = font.FaceName() != a_font.FaceName();
        const bool height = font.lfHeight != a_font.lfHeight;
        font = a_font;
        if (a_mark) {
            Mark(Style::EFontFace, *a_mark && (face || IsMarked(Style::EFontFace)));
            Mark(Style::EFontHeight, *a_mark && (height || IsMarked(Style::EFontHeight)));
        }
    }
    void TakeSkin(const Model& a_skin)
    {
        for (auto& [parameter, color] : colors)
            color = IsMarked(parameter) ? color : a_skin.colors.at(parameter);
        LOGFONTW taken = a_skin.font;
        if (IsMarked(Style::EFontHeight))
            taken.lfHeight = font.lfHeight;
        if (IsMarked(Style::EFontFace))
            taken.SetFaceName(font.FaceName());
        font = taken;
    }
};

/// A style and its model, edited alike.
class Pair {
public:
    Pair()
    {
        for (int parameter = S_firstColor; parameter <= S_lastColor; ++parameter)
            model.colors[parameter] = static_cast<COLORREF>(style->GetValue(parameter));
        model.font = style->GetLOGFONT();
    }

    void SetColor(int a_parameter, COLORREF a_color, bool a_changed)
    {
        (style.get()->*S_setters[a_parameter - S_firstColor])(a_color, a_changed);
        model.colors[a_parameter] = a_color;
        model.Mark(a_parameter, a_changed);
    }
    void SetFont(const LOGFONTW& a_font, std::optional<bool> a_mark)
    {
        style->SetFont(a_font, a_mark);
        model.SetFont(a_font, a_mark);
    }
    void Update(const Pair& a_other, int a_parameter)
    {
        style->UpdateChangedParameter(a_other.style, a_parameter);
        const LOGFONTW& font = a_other.model.font;
        bool differs = false;
        if (a_parameter == Style::EFontFace)
            differs = model.font.FaceName() != font.FaceName();
        else if (a_parameter == Style::EFontHeight)
            differs = model.font.lfHeight != font.lfHeight;
        else if (model.colors.contains(a_parameter))
            differs = model.colors[a_parameter] != a_other.model.colors.at(a_parameter);
        model.Mark(a_parameter, differs);
    }
    void UpdateAll(const Pair& a_base)
    {
        style->UpdateChangedParameters(a_base.style);
        for (const auto& [parameter, color] : model.colors)
            model.Mark(parameter, color != a_base.model.colors.at(parameter));
        model.Mark(Style::EFontFace, model.font != a_base.model.font);
        model.Mark(Style::EFontHeight,
                   std::abs(model.font.lfHeight) * 3 / 2 != std::abs(a_base.model.font.lfHeight) * 3 / 2);
    }
    void TakeSkin(const Pair& a_skin)
    {
        style->CopySettingsFromSelectedStyle(a_skin.style);
        model.TakeSkin(a_skin.model);
    }
    /// Through a file and into a new object, which knows of a template only by its marks.
    void Store()
    {
        Settings node;
        style->Serialize(node, true);
        Settings read;
        ASSERT_EQ(read.LoadFromBytes(node.SaveToBytes("Style"), "style", "Style"), "");
        style = std::make_shared<Style>();
        style->Unserialize(read);
        if (model.isTemplate) {
            for (const auto& [parameter, color] : model.colors)
                model.marks.insert(parameter);
            model.marks.insert({Style::EFontFace, Style::EFontHeight});
        }
        model.isTemplate = false;
    }
    void Reset()
    {
        style->ResetModFlags();
        model.isTemplate = false;
        model.marks.clear();
    }

    void Check() const
    {
        for (int parameter = -1; parameter <= 13; ++parameter)
            ASSERT_EQ(style->IsChangedParameter(parameter), model.IsMarked(parameter)) << parameter;
        ASSERT_EQ(style->HasChangedParameters(), model.isTemplate || !model.marks.empty());
        for (const auto& [parameter, color] : model.colors)
            ASSERT_EQ(style->GetValue(parameter), color) << parameter;
        ASSERT_EQ(style->GetLOGFONT(), model.font);
        LOGFONTW bold = model.font;
        bold.lfWeight = FW_BOLD;
        LOGFONTW seen;
        ASSERT_EQ(GetObjectW(style->GetGdiObject(Style::EBoldFont), sizeof seen, &seen),
                  static_cast<int>(sizeof seen));
        ASSERT_EQ(seen, bold);
        ASSERT_EQ(style->GetValue(Style::EFontHeight), std::abs(model.font.lfHeight) * 3 / 2);
    }

    std::shared_ptr<Style> style = std::make_shared<Style>();
    Model model;
};

class RandomEdits {
public:
    explicit RandomEdits(unsigned int a_seed) : m_random(a_seed) {}

    int Below(int a_limit) { return std::uniform_int_distribution(0, a_limit - 1)(m_random); }
    LOGFONTW AnyFont()
    {
        const std::wstring faces[] = {L"DejaVu Sans", L"Zażółć", std::wstring(31, L'\U0001F4C8')};
        const int heights[] = {-12, 12, -13, -18, 1};
        LOGFONTW font = Font(faces[Below(3)], heights[Below(5)], 100 * Below(9));
        font.lfItalic = static_cast<std::uint8_t>(Below(2));
        return font;
    }
    std::optional<bool> AnyMark() { return Below(3) == 0 ? std::nullopt : std::optional(Below(2) == 0); }

    void Edit(Pair& a_pair, const Pair& a_other)
    {
        const int color = S_firstColor + Below(8);
        switch (Below(10)) {
        case 0:
            return a_pair.SetColor(color, static_cast<COLORREF>(Below(3)), Below(2) == 0);
        case 1:
            return a_pair.SetFont(AnyFont(), AnyMark());
        case 2:
            return a_pair.Update(a_other, Below(2) == 0 ? color : Below(13));
        case 3:
            return a_pair.UpdateAll(a_other);
        case 4:
        case 5:
            return a_pair.TakeSkin(a_other);
        case 6:
            return a_pair.Store();
        case 7:
            return Below(4) == 0 ? a_pair.Reset() : SetTemplate(a_pair);
        case 8:
            return SetHeight(a_pair);
        default:
            return CopyMarks(a_pair, a_other);
        }
    }

private:
    void SetTemplate(Pair& a_pair)
    {
        a_pair.model.isTemplate = Below(3) == 0;
        a_pair.style->SetIsTemplate(a_pair.model.isTemplate);
    }
    void SetHeight(Pair& a_pair)
    {
        LOGFONTW font = a_pair.model.font;
        font.lfHeight = -12 - Below(2);
        const auto mark = AnyMark();
        a_pair.style->SetFontHeight(font.lfHeight, mark);
        a_pair.model.SetFont(font, mark);
    }
    void CopyMarks(Pair& a_pair, const Pair& a_other)
    {
        a_pair.style->CopyModFlags(*a_other.style);
        a_pair.model.isTemplate = a_other.model.isTemplate;
        a_pair.model.marks = a_other.model.marks;
    }

    std::mt19937 m_random;
};

TEST(StyleTextFieldTest, ValuesAndMarksAreThoseOfAPlainModelAfterAnyEdits)
{
    for (unsigned int seed = 0; seed < 40; ++seed) {
        RandomEdits random(seed);
        std::array<Pair, 3> pairs;
        for (int step = 0; step < 100; ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
            Pair& edited = pairs[static_cast<std::size_t>(random.Below(3))];
            random.Edit(edited, pairs[static_cast<std::size_t>(random.Below(3))]);
            edited.Check();
            if (testing::Test::HasFatalFailure())
                return;
        }
    }
}

TEST(StyleTextFieldTest, StoredForm)
{
    Style style;
    style.SetBackgroundColorDec(0x0000FE, true);
    style.SetFont(Font(L"Zażółć", -13), true);
    const std::string values =
        "<TypeClassId>StyleTextField</TypeClassId><Font><FaceName escaped=\"true\">Za\\x{17C}\\x{F3}\\x{142}\\x{107}"
        "</FaceName><Height>-13</Height><Width>0</Width><Weight>400</Weight><Escapement>0</Escapement>"
        "<Orientation>0</Orientation><Italic>0</Italic><Underline>0</Underline><StrikeOut>0</StrikeOut>"
        "<CharSet>0</CharSet><OutPrecision>0</OutPrecision><ClipPrecision>0</ClipPrecision><Quality>0</Quality>"
        "<PitchAndFamily>0</PitchAndFamily></Font><FgColor>0</FgColor><BgColor>16777215</BgColor>"
        "<FgColorInc>20480</FgColorInc><BgColorInc>65280</BgColorInc><FgColorDec>80</FgColorDec>"
        "<BgColorDec>254</BgColorDec><FgColorNew>0</FgColorNew><BgColorNew>16777215</BgColorNew>";
    const auto text = [&style](bool a_withMarks) {
        Settings node;
        style.Serialize(node, a_withMarks);
        return node.ConvertToString();
    };
    EXPECT_EQ(text(false), "<settings version=\"1\">" + values + "</settings>");
    EXPECT_EQ(text(true), "<settings version=\"1\">" + values +
                              "<Parameter_EBackgroundColorDecrease>true</Parameter_EBackgroundColorDecrease>"
                              "<Parameter_EFontFace>true</Parameter_EFontFace>"
                              "<Parameter_EFontHeight>true</Parameter_EFontHeight></settings>");
    style.ResetModFlags();
    style.SetIsTemplate(true);
    std::string marks;
    for (const char* key : {"ForegroundColorNormal", "BackgroundColorNormal", "ForegroundColorIncrease",
                            "BackgroundColorIncrease", "ForegroundColorDecrease", "BackgroundColorDecrease",
                            "ForegroundColorNewItem", "BackgroundColorNewItem", "FontFace", "FontHeight"})
        marks += std::string("<Parameter_E") + key + ">true</Parameter_E" + key + ">";
    EXPECT_EQ(text(true), "<settings version=\"1\">" + values + marks + "</settings>");

    Settings node;
    style.SerializeTemplate(node);
    EXPECT_EQ(node.ConvertToString(), "<settings>" + values + "</settings>");
    Style read;
    read.SetForegroundColorInc(1, true);
    read.UnserializeTemplate(node);
    EXPECT_EQ(read.GetLOGFONT(), style.GetLOGFONT());
    EXPECT_EQ(read.GetValue(Style::EBackgroundColorDecrease), 0x0000FE);
    read.SetIsTemplate(false);
    EXPECT_TRUE(read.IsChangedParameter(Style::EForegroundColorIncrease)) << "the marks stay";
}

TEST(StyleTextFieldTest, HostileNodesGiveTheDocumentedDefaults)
{
    struct Case {
        const char* inside;
        COLORREF background;
        int height;
        bool marked;
    };
    std::string nested = "<Height>20</Height>";
    for (int level = 0; level < 990; ++level)
        nested.insert(0, "<Font>").append("</Font>");
    const Case cases[] = {
        {"", 0, -12, false},
        {"<Font>text</Font><BgColor>text</BgColor><Parameter_EFontHeight>text</Parameter_EFontHeight>", 0,
         -12, false},
        {"<Font><Height>0</Height><Width>-9</Width><Weight>2000</Weight></Font><BgColor>-1</BgColor>", 0, -12,
         false},
        {"<Font><Height>-2147483648</Height></Font><BgColor>4294967296</BgColor>", 0, -12, false},
        {"<Font><Height>1001</Height></Font><BgColor>4294967295</BgColor>", 0xFFFFFFFF, -12, false},
        {"<Font><Height>-1000</Height></Font><BgColor><x>1</x></BgColor>", 0, -1000, false},
        {"<Parameter_EFontSize>true</Parameter_EFontSize>", 0, -12, true},
        {"<item/><item/><Parameter_EFontHeight>true</Parameter_EFontHeight>", 0, -12, true},
        {nested.c_str(), 0, -12, false},
    };
    for (const Case& hostile : cases) {
        SCOPED_TRACE(std::string(hostile.inside).substr(0, 100));
        Settings node;
        ASSERT_TRUE(node.ConvertFromString("<settings><TypeClassId>StyleTextField</TypeClassId>" +
                                           std::string(hostile.inside) + "</settings>"));
        Style style;
        style.SetFont(Font(L"Other", 50, 900), true);
        style.Unserialize(node);
        EXPECT_EQ(style.GetBackgroundColorNormal(), hostile.background);
        LOGFONTW font = Style().GetLOGFONT();
        font.lfHeight = hostile.height;
        EXPECT_EQ(style.GetLOGFONT(), font);
        EXPECT_EQ(style.HasChangedParameters(), hostile.marked);
        EXPECT_EQ(style.IsChangedParameter(Style::EFontHeight), hostile.marked);
    }
    Settings present;
    Style().Serialize(present, false);
    present[Style::Obsolete_FontSize] = true;
    Style style;
    style.Unserialize(present);
    EXPECT_FALSE(style.HasChangedParameters()) << "that key means something in old files only";
}

TEST(StyleTextFieldTest, AnotherTypeIsRefusedAndChangesNothing)
{
    Style style;
    style.SetFont(Font(L"Own", -20), true);
    const LOGFONTW font = style.GetLOGFONT();
    for (const auto& [type, message] :
         {std::pair("", "Empty style type"),
          std::pair("StyleTest", "Invalid type restored. This should never happen")}) {
        Settings node;
        node[StyleBase::TypeClass] = type;
        node["BgColor"] = 1;
        for (const bool asTemplate : {false, true}) {
            const std::string text = kalvento::tests::RaisedText<KalventoException>(
                [&] { asTemplate ? style.UnserializeTemplate(node) : style.Unserialize(node); });
            EXPECT_TRUE(text.starts_with("StyleBase::CheckType\t") && text.ends_with(message)) << text;
            EXPECT_EQ(style.GetLOGFONT(), font);
            EXPECT_EQ(style.GetBackgroundColorNormal(), 0xFFFFFFU);
            EXPECT_FALSE(style.IsChangedParameter(Style::EForegroundColorNormal)) << "no template";
        }
    }
}

TEST(StyleTextFieldTest, FontObjectsGiveAndTakeDescriptions)
{
    Style style;
    style.SetFontHeight(-20, true);
    const LOGFONTW wanted = Font(L"Given", -30);
    const HFONT given = CreateFontIndirectW(&wanted);
    style.SetGdiObject(Style::EBoldFont, given);
    EXPECT_EQ(style.GetRowFontHeight(), -20);
    style.SetGdiObject(Style::EFont, given);
    EXPECT_EQ(style.GetLOGFONTObject(Style::EFont), wanted);
    EXPECT_FALSE(style.IsChangedParameter(Style::EFontFace));
    EXPECT_TRUE(style.IsChangedParameter(Style::EFontHeight));
    EXPECT_EQ(style.GetLOGFONTObject(Style::EFontFace), LOGFONTW());
    EXPECT_EQ(style.GetGdiObject(Style::EFontFace), nullptr);

    EXPECT_TRUE(DeleteObject(given));
    EXPECT_FALSE(DeleteObject(given));
    style.SetFontHeight(-21, false);
    style.SetFont(given, true);
    style.SetFont(nullptr, true);
    EXPECT_EQ(style.GetRowFontHeight(), -21) << "what is no object changes nothing";

    const HFONT used = style.GetHFONT();
    const Style copy(style);
    EXPECT_EQ(copy.GetHFONT(), used);
    style.SetFontHeight(-22, false);
    LOGFONTW seen;
    EXPECT_NE(GetObjectW(used, sizeof seen, &seen), 0) << "the copy still paints with it";
    EXPECT_EQ(seen.lfHeight, -21);
    const HFONT last = std::make_shared<Style>(style)->GetBoldHFONT();
    EXPECT_EQ(GetObjectW(last, sizeof seen, &seen), 0) << "an object goes with its last style";
}

TEST(StyleTextFieldTest, TheCreatorIsTheTypeInEveryModule)
{
    const std::shared_ptr<StyleBase> text = Style::Creator()();
    const std::shared_ptr<StyleBase> test = StyleTest::Creator()();
    EXPECT_TRUE(text->IsKindOf(Style::Creator()) && test->IsKindOf(StyleTest::Creator()));
    EXPECT_FALSE(text->IsKindOf(StyleTest::Creator()) || test->IsKindOf(Style::Creator()));
    text->UpdateChangedParameter(test, Style::EFontHeight);
    EXPECT_TRUE(text->IsChangedParameter(Style::EFontHeight)) << "a style without a font has the height 0";
}

} // namespace
