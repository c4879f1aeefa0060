#pragma once

#include "platform/ColorRef.h"
#include "styles/GdiFontWrapper.h"
#include "styles/StyleChild.h"

#include <array>
#include <cstddef>
#include <optional>

class KALVENTO_API StyleTextField;
extern template class KALVENTO_API StyleChild<StyleTextField>;

/// The style of nearly every sheet: a font, its bold form, and text and background in four states. docs/styles.md
/// describes how it is stored.
///
/// Who sets a value says whether that is a change by the user. Where that is an std::optional, an empty one leaves the
/// marks as they are.
class KALVENTO_API StyleTextField : public StyleChild<StyleTextField> {
public:
    /// The numbers are an interface with plug-ins: append, never renumber.
    enum EParameter : std::int64_t {
        EFont = 0,
        EFontHeight = 1,
        EForegroundColorNormal = 2,
        EBackgroundColorNormal = 3,
        EForegroundColorIncrease = 4,
        EBackgroundColorIncrease = 5,
        EForegroundColorDecrease = 6,
        EBackgroundColorDecrease = 7,
        EForegroundColorNewItem = 8,
        EBackgroundColorNewItem = 9,
        EBoldFont = 10,
        EFontFace = 11,
        EFontSize = 12 ///< Stands in old files only, for what EFontHeight is now.
    };

    // The keys of the marks.
    static constexpr std::string_view ForegroundColorNormal = "Parameter_EForegroundColorNormal";
    static constexpr std::string_view BackgroundColorNormal = "Parameter_EBackgroundColorNormal";
    static constexpr std::string_view ForegroundColorIncrease = "Parameter_EForegroundColorIncrease";
    static constexpr std::string_view BackgroundColorIncrease = "Parameter_EBackgroundColorIncrease";
    static constexpr std::string_view ForegroundColorDecrease = "Parameter_EForegroundColorDecrease";
    static constexpr std::string_view BackgroundColorDecrease = "Parameter_EBackgroundColorDecrease";
    static constexpr std::string_view ForegroundColorNewItem = "Parameter_EForegroundColorNewItem";
    static constexpr std::string_view BackgroundColorNewItem = "Parameter_EBackgroundColorNewItem";
    static constexpr std::string_view FontFace = "Parameter_EFontFace";
    static constexpr std::string_view FontHeight = "Parameter_EFontHeight";
    static constexpr std::string_view Obsolete_FontSize = "Parameter_EFontSize";

    /// Black on white; rising dark green on green, falling dark red on red, new items black on white.
    StyleTextField();

    /// The display font height for EFontHeight, a colour for 2 to 9, else 0.
    std::int64_t GetValue(std::int64_t a_parameter) const override;
    /// Takes colours only, of a_value the low 32 bits.
    void SetValue(std::int64_t a_parameter, std::int64_t a_value) override;
    void Serialize(Settings& a_node, bool a_withChangedFlags) const override;
    /// Takes all values over, and the marks that are stored; whether it is a template stays. A colour that is missing or
    /// can't be read is 0, black; of the font, GdiFontWrapper tells.
    void Unserialize(const Settings& a_node) override;
    /// Without marks, and the node's version stays.
    void SerializeTemplate(Settings& a_node) const override;
    /// Takes all values over; the marks stay.
    void UnserializeTemplate(const Settings& a_node) override;
    std::string GetTypeName() const override;
    /// Empty.
    std::shared_ptr<StyleBase> DefaultStyle() const override;
    /// EFontFace and EFontHeight compare the face and lfHeight of the other style's EFont; where that has none, their
    /// values. An empty pointer changes no mark.
    void UpdateChangedParameter(std::shared_ptr<StyleBase> a_other, std::int64_t a_parameter) override;
    /// EFont only, which takes the font; no mark moves.
    void SetGdiObject(std::int64_t a_parameter, HGDIOBJ a_object) override;
    /// EFont and EBoldFont; valid until the style's font changes.
    HGDIOBJ GetGdiObject(std::int64_t a_parameter) override;
    LOGFONTW GetLOGFONTObject(std::int64_t a_parameter) const override;

    void SetForegroundColorNormal(COLORREF a_color, bool a_changed);
    void SetBackgroundColorNormal(COLORREF a_color, bool a_changed);
    void SetForegroundColorInc(COLORREF a_color, bool a_changed);
    void SetBackgroundColorInc(COLORREF a_color, bool a_changed);
    void SetForegroundColorDec(COLORREF a_color, bool a_changed);
    void SetBackgroundColorDec(COLORREF a_color, bool a_changed);
    void SetForegroundColorNewItem(COLORREF a_color, bool a_changed);
    void SetBackgroundColorNewItem(COLORREF a_color, bool a_changed);

    COLORREF GetForegroundColorNormal() const { return m_colors[0]; }
    COLORREF GetBackgroundColorNormal() const { return m_colors[1]; }
    COLORREF GetForegroundColorInc() const { return m_colors[2]; }
    COLORREF GetBackgroundColorInc() const { return m_colors[3]; }
    COLORREF GetForegroundColorDec() const { return m_colors[4]; }
    COLORREF GetBackgroundColorDec() const { return m_colors[5]; }
    COLORREF GetForegroundColorNewItem() const { return m_colors[6]; }
    COLORREF GetBackgroundColorNewItem() const { return m_colors[7]; }

    LOGFONTW GetLOGFONT() const { return m_font.GetLOGFONT(); }
    LOGFONTW GetBoldLOGFONT() const { return m_boldFont.GetLOGFONT(); }
    /// The objects to paint with, valid until the style's font changes; the style's own.
    HFONT GetHFONT() const { return m_font.GetHFONT(); }
    HFONT GetBoldHFONT() const { return m_boldFont.GetHFONT(); }
    HGDIOBJ GetFontHGDIOBJ() const { return m_font.GetHGDIOBJ(); }
    HGDIOBJ GetBoldFontHGDIOBJ() const { return m_boldFont.GetHGDIOBJ(); }
    /// lfHeight as it is, below zero as a rule.
    long GetRowFontHeight() const { return m_font.GetLOGFONT().lfHeight; }
    /// The height of a sheet's rows: lfHeight without its sign, times 3, halved and cut.
    long GetDisplayFontHeight() const { return m_displayFontHeight; }

    /// Sets both fonts. a_mark true: EFontFace and EFontHeight are marked if they differ from what was, are marked
    /// already, or the style is a template; false: both marks go.
    void SetFont(LOGFONTW a_font, std::optional<bool> a_mark);
    /// The same from a font object; null or what is no font changes nothing.
    void SetFont(void* a_fontHandle, std::optional<bool> a_mark);
    /// Replaces lfHeight, held to 32 bits.
    void SetFontHeight(long a_height, std::optional<bool> a_mark);

    /// After an edit of everything: marks what differs from a_base and takes the other marks away. Fonts that differ in
    /// anything mark EFontFace. An empty pointer changes nothing.
    void UpdateChangedParameters(const std::shared_ptr<StyleTextField>& a_base);
    /// The skin changed: takes from a_source what isn't marked, of the font all but a marked height and face. No mark
    /// moves. An empty pointer changes nothing.
    void CopySettingsFromSelectedStyle(std::shared_ptr<StyleTextField> a_source);

private:
    void SetColor(EParameter a_parameter, COLORREF a_color, bool a_changed);
    void WriteValues(Settings& a_node) const;
    void ReadValues(const Settings& a_node);
    void SetBothFonts(const LOGFONTW& a_font);
    void CalculateFontHeight();

    GdiFontWrapper m_font;
    GdiFontWrapper m_boldFont;        // made of m_font
    std::array<COLORREF, 8> m_colors; // EForegroundColorNormal to EBackgroundColorNewItem
    long m_displayFontHeight = 0;
};
