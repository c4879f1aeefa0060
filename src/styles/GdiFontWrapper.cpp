#include "styles/GdiFontWrapper.h"

#include "platform/GdiObjects.h"
#include "platform/NearestInt.h"
#include "settings/TakeSetting.h"

#include <string_view>

namespace {

constexpr std::string_view S_faceName = "FaceName";
constexpr std::string_view S_height = "Height";
constexpr std::string_view S_width = "Width";
constexpr std::string_view S_weight = "Weight";

constexpr std::int32_t S_maxSize = 1000; // pixels; greater letters only cost memory
constexpr std::int32_t S_maxWeight = 1000;

struct ByteField {
    std::string_view key;
    std::uint8_t LOGFONTW::*field;
};
constexpr ByteField S_byteFields[] = {
    {"Italic", &LOGFONTW::lfItalic},
    {"Underline", &LOGFONTW::lfUnderline},
    {"StrikeOut", &LOGFONTW::lfStrikeOut},
    {"CharSet", &LOGFONTW::lfCharSet},
    {"OutPrecision", &LOGFONTW::lfOutPrecision},
    {"ClipPrecision", &LOGFONTW::lfClipPrecision},
    {"Quality", &LOGFONTW::lfQuality},
    {"PitchAndFamily", &LOGFONTW::lfPitchAndFamily},
};

struct AngleField {
    std::string_view key;
    std::int32_t LOGFONTW::*field;
};
constexpr AngleField S_angleFields[] = {
    {"Escapement", &LOGFONTW::lfEscapement},
    {"Orientation", &LOGFONTW::lfOrientation},
};

LOGFONTW DefaultFont()
{
    LOGFONTW font;
    font.lfHeight = -12;
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = 1; // the letters of the user's language
    font.SetFaceName(L"DejaVu Sans");
    return font;
}

} // namespace

GdiFontWrapper::GdiFontWrapper(long a_forcedWeight) : m_forcedWeight(a_forcedWeight)
{
    FromLOGFONT(DefaultFont(), a_forcedWeight);
}

void GdiFontWrapper::FromLOGFONT(const LOGFONTW& a_font, long a_weight)
{
    LOGFONTW font = a_font;
    font.SetFaceName(a_font.FaceName()); // bytes after the name would make equal fonts differ
    if (a_weight != 0)
        font.lfWeight = kalvento::internal::NearestInt(std::int64_t{a_weight});
    m_forcedWeight = a_weight;
    if (font == m_font)
        return;
    m_font = font;
    m_object.reset();
}

HFONT GdiFontWrapper::GetHFONT() const
{
    if (!m_object)
        m_object.reset(CreateFontIndirectW(&m_font), [](HFONT a_object) { DeleteObject(a_object); });
    return m_object.get();
}

void GdiFontWrapper::Serialize(Settings& a_node) const
{
    a_node[S_faceName] = m_font.FaceName();
    a_node[S_height] = m_font.lfHeight;
    a_node[S_width] = m_font.lfWidth;
    a_node[S_weight] = m_font.lfWeight;
    for (const auto& [key, field] : S_angleFields)
        a_node[key] = m_font.*field;
    for (const auto& [key, field] : S_byteFields)
        a_node[key] = static_cast<unsigned int>(m_font.*field);
}

void GdiFontWrapper::Unserialize(const Settings& a_node)
{
    const LOGFONTW defaults = DefaultFont();
    LOGFONTW font = defaults;
    if (const Settings& name = a_node[S_faceName]; name.Exists())
        font.SetFaceName(static_cast<std::wstring>(name));
    TakeSetting(a_node, S_height, font.lfHeight);
    TakeSetting(a_node, S_width, font.lfWidth);
    TakeSetting(a_node, S_weight, font.lfWeight);
    for (const auto& [key, field] : S_angleFields)
        TakeSetting(a_node, key, font.*field);
    for (const auto& [key, field] : S_byteFields)
        TakeSetting(a_node, key, font.*field);

    // Zero is what a text that is no number reads as; a row of that height can't be seen.
    if (font.lfHeight == 0 || font.lfHeight < -S_maxSize || font.lfHeight > S_maxSize)
        font.lfHeight = defaults.lfHeight;
    if (font.lfWidth < 0 || font.lfWidth > S_maxSize)
        font.lfWidth = defaults.lfWidth;
    if (font.lfWeight < 0 || font.lfWeight > S_maxWeight)
        font.lfWeight = defaults.lfWeight;
    FromLOGFONT(font, m_forcedWeight);
}
