#pragma once

#include "platform/ColorRef.h"
#include "platform/Export.h"
#include "platform/LOGFONTW.h"

#include <cstdint>
#include <memory>
#include <string>

class Settings;
class StyleBase;
class StyleTextField;

/// What works on styles that may not be there, the steps of a font's size, and the text of a colour. Main thread.
namespace StylesTools {

enum FontCommand : std::uint32_t { EFontReset = 0, EFontIncrease = 1, EFontDecrease = 2 };

/// A new style of the type that the node names, filled from the node. Empty where StylesManager knows no such type.
/// Raises as the style's Unserialize does.
KALVENTO_API std::shared_ptr<StyleBase> LoadStyle(const Settings& a_node);

/// The four below do nothing for an empty pointer.
KALVENTO_API void SafeSerialize(const std::shared_ptr<StyleBase>& a_style, Settings& a_node,
                                bool a_withChangedFlags);
KALVENTO_API void SafeSerializeTemplate(const std::shared_ptr<StyleBase>& a_style, Settings& a_node);
/// Nothing for an absent node either. Raises as the style's Unserialize does.
KALVENTO_API void SafeUnserialize(const std::shared_ptr<StyleBase>& a_style, const Settings& a_node);
KALVENTO_API void SafeReleaseStyle(const std::shared_ptr<StyleBase>& a_style);

/// The next height in that direction of 6, 8, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36, 48, 72, whatever the sign
/// of the present one, with a minus before it; past the ends the present one. Reset and unknown commands give the
/// default.
KALVENTO_API long ChangeFontSize(FontCommand a_command, long a_currentHeight, long a_defaultHeight);
KALVENTO_API void ChangeFontSize(FontCommand a_command, LOGFONTW a_defaultFont, LOGFONTW& a_font);
/// A step is marked as a change by the user; a reset takes the marks of face and height away. Nothing where a pointer is
/// empty.
KALVENTO_API void ChangeFontSize(FontCommand a_command, const std::shared_ptr<StyleTextField>& a_defaultStyle,
                                 const std::shared_ptr<StyleTextField>& a_style);
/// The same; nothing where a style is no StyleTextField.
KALVENTO_API void ChangeFontSize(FontCommand a_command, const std::shared_ptr<StyleBase>& a_defaultStyle,
                                 const std::shared_ptr<StyleBase>& a_style);

/// "#", then red, green and blue, each two characters wide: a value below 0x10 has a blank for its first digit, so black
/// is "# 0 0 0". Digits are lower case.
KALVENTO_API std::wstring GetHexRGBColor(COLORREF a_color);

} // namespace StylesTools
