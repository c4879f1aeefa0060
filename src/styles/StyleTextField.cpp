#include "styles/StyleTextField.h"

#include "platform/GdiObjects.h"
#include "platform/NearestInt.h"
#include "settings/Settings.h"

#include <cstdlib>

template class StyleChild<StyleTextField>;

namespace {

constexpr std::int32_t S_version = 1;
constexpr long S_noForcedWeight = 0;
constexpr std::string_view S_font = "Font";

struct ColorParameter {
    StyleTextField::EParameter parameter;
    std::string_view key;
    std::string_view markKey;
    COLORREF defaultColor;
};

// In the order in which they are held and stored.
constexpr std::array<ColorParameter, 8> S_colors = {{
    {StyleTextField::EForegroundColorNormal, "FgColor", StyleTextField::ForegroundColorNormal, 0x000000},
    {StyleTextField::EBackgroundColorNormal, "BgColor", StyleTextField::BackgroundColorNormal, 0xFFFFFF},
    {StyleTextField::EForegroundColorIncrease, "FgColorInc", StyleTextField::ForegroundColorIncrease,
     0x005000},
    {StyleTextField::EBackgroundColorIncrease, "BgColorInc", StyleTextField::BackgroundColorIncrease,
     0x00FF00},
    {StyleTextField::EForegroundColorDecrease, "FgColorDec", StyleTextField::ForegroundColorDecrease,
     0x000050},
    {StyleTextField::EBackgroundColorDecrease, "BgColorDec", StyleTextField::BackgroundColorDecrease,
     0x0000FF},
    {StyleTextField::EForegroundColorNewItem, "FgColorNew", StyleTextField::ForegroundColorNewItem, 0x000000},
    {StyleTextField::EBackgroundColorNewItem, "BgColorNew", StyleTextField::BackgroundColorNewItem, 0xFFFFFF},
}};

struct FontMark {
    StyleTextField::EParameter parameter;
    std::string_view markKey;
};
constexpr FontMark S_fontMarks[] = {
    {StyleTextField::EFontFace, StyleTextField::FontFace},
    {StyleTextField::EFontHeight, StyleTextField::FontHeight},
};

// Place of a colour in S_colors; empty where the parameter is none.
std::optional<std::size_t> ColorPlace(std::int64_t a_parameter)
{
    if (a_parameter < StyleTextField::EForegroundColorNormal ||
        a_parameter > StyleTextField::EBackgroundColorNewItem)
        return std::nullopt;
    return static_cast<std::size_t>(a_parameter - StyleTextField::EForegroundColorNormal);
}

std::optional<LOGFONTW> DescriptionOf(HGDIOBJ a_object)
{
    LOGFONTW font;
    if (a_object == nullptr || GetObjectW(a_object, sizeof font, &font) == 0)
        return std::nullopt;
    return font;
}

} // namespace

StyleTextField::StyleTextField() : m_font(S_noForcedWeight), m_boldFont(FW_BOLD)
{
    for (std::size_t place = 0; place < S_colors.size(); ++place)
        m_colors[place] = S_colors[place].defaultColor;
    SetBothFonts(m_font.GetLOGFONT());
}

std::int64_t StyleTextField::GetValue(std::int64_t a_parameter) const
{
    if (a_parameter == EFontHeight)
        return m_displayFontHeight;
    const auto place = ColorPlace(a_parameter);
    return place ? m_colors[*place] : 0;
}

void StyleTextField::SetValue(std::int64_t a_parameter, std::int64_t a_value)
{
    if (const auto place = ColorPlace(a_parameter))
        m_colors[*place] = static_cast<COLORREF>(a_value);
}

void StyleTextField::Serialize(Settings& a_node, bool a_withChangedFlags) const
{
    a_node.m_version = S_version;
    StyleBase::Serialize(a_node, a_withChangedFlags);
    WriteValues(a_node);
    if (!a_withChangedFlags)
        return;
    const auto writeMark = [&](EParameter a_parameter, std::string_view a_key) {
        if (IsChangedParameter(a_parameter))
            a_node[a_key] = true;
    };
    for (const ColorParameter& color : S_colors)
        writeMark(color.parameter, color.markKey);
    for (const FontMark& mark : S_fontMarks)
        writeMark(mark.parameter, mark.markKey);
}

void StyleTextField::Unserialize(const Settings& a_node)
{
    StyleBase::Unserialize(a_node);
    ReadValues(a_node);
    ClearChangedParameters();
    const auto readMark = [&](EParameter a_parameter, std::string_view a_key) {
        if (static_cast<bool>(a_node[a_key]))
            SetChangedParameter(a_parameter, true);
    };
    for (const ColorParameter& color : S_colors)
        readMark(color.parameter, color.markKey);
    for (const FontMark& mark : S_fontMarks)
        readMark(mark.parameter, mark.markKey);
    if (a_node.m_version < S_version) {
        readMark(EFontSize, Obsolete_FontSize);
        CorrectChangedParameter(EFontSize, EFontHeight);
    }
}

void StyleTextField::SerializeTemplate(Settings& a_node) const
{
    StyleBase::SerializeTemplate(a_node);
    WriteValues(a_node);
}

void StyleTextField::UnserializeTemplate(const Settings& a_node)
{
    StyleBase::UnserializeTemplate(a_node);
    ReadValues(a_node);
}

std::string StyleTextField::GetTypeName() const
{
    return "StyleTextField";
}

std::shared_ptr<StyleBase> StyleTextField::DefaultStyle() const
{
    return nullptr;
}

void StyleTextField::UpdateChangedParameter(std::shared_ptr<StyleBase> a_other, std::int64_t a_parameter)
{
    if (!a_other)
        return;
    UpdateChangedValueParameter(a_other, a_parameter);
    if (a_parameter != EFontFace && a_parameter != EFontHeight)
        return;
    const auto other = DescriptionOf(a_other->GetGdiObject(EFont));
    if (!other)
        return;
    const bool differs = a_parameter == EFontFace ? other->FaceName() != m_font.GetLOGFONT().FaceName()
                                                  : other->lfHeight != GetRowFontHeight();
    SetChangedParameter(a_parameter, differs);
}

void StyleTextField::SetGdiObject(std::int64_t a_parameter, HGDIOBJ a_object)
{
    if (a_parameter == EFont)
        SetFont(a_object, std::nullopt);
}

HGDIOBJ StyleTextField::GetGdiObject(std::int64_t a_parameter)
{
    if (a_parameter == EFont)
        return GetFontHGDIOBJ();
    return a_parameter == EBoldFont ? GetBoldFontHGDIOBJ() : nullptr;
}

LOGFONTW StyleTextField::GetLOGFONTObject(std::int64_t a_parameter) const
{
    if (a_parameter == EFont)
        return GetLOGFONT();
    return a_parameter == EBoldFont ? GetBoldLOGFONT() : LOGFONTW();
}

void StyleTextField::SetForegroundColorNormal(COLORREF a_color, bool a_changed)
{
    SetColor(EForegroundColorNormal, a_color, a_changed);
}

void StyleTextField::SetBackgroundColorNormal(COLORREF a_color, bool a_changed)
{
    SetColor(EBackgroundColorNormal, a_color, a_changed);
}

void StyleTextField::SetForegroundColorInc(COLORREF a_color, bool a_changed)
{
    SetColor(EForegroundColorIncrease, a_color, a_changed);
}

void StyleTextField::SetBackgroundColorInc(COLORREF a_color, bool a_changed)
{
    SetColor(EBackgroundColorIncrease, a_color, a_changed);
}

void StyleTextField::SetForegroundColorDec(COLORREF a_color, bool a_changed)
{
    SetColor(EForegroundColorDecrease, a_color, a_changed);
}

void StyleTextField::SetBackgroundColorDec(COLORREF a_color, bool a_changed)
{
    SetColor(EBackgroundColorDecrease, a_color, a_changed);
}

void StyleTextField::SetForegroundColorNewItem(COLORREF a_color, bool a_changed)
{
    SetColor(EForegroundColorNewItem, a_color, a_changed);
}

void StyleTextField::SetBackgroundColorNewItem(COLORREF a_color, bool a_changed)
{
    SetColor(EBackgroundColorNewItem, a_color, a_changed);
}

void StyleTextField::SetFont(LOGFONTW a_font, std::optional<bool> a_mark)
{
    const LOGFONTW before = m_font.GetLOGFONT();
    SetBothFonts(a_font);
    if (!a_mark)
        return;
    const LOGFONTW& now = m_font.GetLOGFONT();
    SetChangedParameter(EFontFace,
                        *a_mark && (IsChangedParameter(EFontFace) || now.FaceName() != before.FaceName()));
    SetChangedParameter(EFontHeight,
                        *a_mark && (IsChangedParameter(EFontHeight) || now.lfHeight != before.lfHeight));
}

void StyleTextField::SetFont(void* a_fontHandle, std::optional<bool> a_mark)
{
    if (const auto font = DescriptionOf(a_fontHandle))
        SetFont(*font, a_mark);
}

void StyleTextField::SetFontHeight(long a_height, std::optional<bool> a_mark)
{
    LOGFONTW font = GetLOGFONT();
    font.lfHeight = kalvento::internal::NearestInt(std::int64_t{a_height});
    SetFont(font, a_mark);
}

void StyleTextField::UpdateChangedParameters(const std::shared_ptr<StyleTextField>& a_base)
{
    if (!a_base)
        return;
    for (const ColorParameter& color : S_colors)
        UpdateChangedValueParameter(a_base, color.parameter);
    SetChangedParameter(EFontFace, m_font != a_base->m_font);
    UpdateChangedValueParameter(a_base, EFontHeight);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): plug-ins call it with this signature.
void StyleTextField::CopySettingsFromSelectedStyle(std::shared_ptr<StyleTextField> a_source)
{
    if (!a_source)
        return;
    for (std::size_t place = 0; place < S_colors.size(); ++place) {
        if (!IsChangedParameter(S_colors[place].parameter))
            m_colors[place] = a_source->m_colors[place];
    }
    const LOGFONTW& own = m_font.GetLOGFONT();
    LOGFONTW font = a_source->GetLOGFONT();
    if (IsChangedParameter(EFontHeight))
        font.lfHeight = own.lfHeight;
    if (IsChangedParameter(EFontFace))
        font.SetFaceName(own.FaceName());
    if (font != own)
        SetFont(font, std::nullopt);
}

void StyleTextField::SetColor(EParameter a_parameter, COLORREF a_color, bool a_changed)
{
    SetValue(a_parameter, a_color);
    SetChangedParameter(a_parameter, a_changed);
}

void StyleTextField::WriteValues(Settings& a_node) const
{
    m_font.Serialize(a_node[S_font]);
    for (std::size_t place = 0; place < S_colors.size(); ++place)
        a_node[S_colors[place].key] = m_colors[place];
}

void StyleTextField::ReadValues(const Settings& a_node)
{
    m_font.Unserialize(a_node[S_font]);
    SetBothFonts(m_font.GetLOGFONT());
    for (std::size_t place = 0; place < S_colors.size(); ++place)
        m_colors[place] = static_cast<COLORREF>(a_node[S_colors[place].key]);
}

void StyleTextField::SetBothFonts(const LOGFONTW& a_font)
{
    const LOGFONTW font = a_font; // it may be that of m_font
    m_font.FromLOGFONT(font, S_noForcedWeight);
    m_boldFont.FromLOGFONT(font, FW_BOLD);
    CalculateFontHeight();
}

void StyleTextField::CalculateFontHeight()
{
    m_displayFontHeight = std::labs(GetRowFontHeight()) * 3 / 2;
}
