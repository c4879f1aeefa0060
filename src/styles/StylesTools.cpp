#include "styles/StylesTools.h"

#include "platform/NearestInt.h"
#include "settings/Settings.h"
#include "styles/StyleTextField.h"
#include "styles/StylesManager.h"

#include <fmt/xchar.h>

#include <algorithm>
#include <array>

namespace StylesTools {

namespace {

constexpr std::array<long, 16> S_sizes = {6, 8, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36, 48, 72};

} // namespace

std::shared_ptr<StyleBase> LoadStyle(const Settings& a_node)
{
    auto style = StylesManager::Instance().CreateStyleFromClassName(a_node[StyleBase::TypeClass]);
    SafeUnserialize(style, a_node);
    return style;
}

void SafeSerialize(const std::shared_ptr<StyleBase>& a_style, Settings& a_node, bool a_withChangedFlags)
{
    if (a_style)
        a_style->Serialize(a_node, a_withChangedFlags);
}

void SafeSerializeTemplate(const std::shared_ptr<StyleBase>& a_style, Settings& a_node)
{
    if (a_style)
        a_style->SerializeTemplate(a_node);
}

void SafeUnserialize(const std::shared_ptr<StyleBase>& a_style, const Settings& a_node)
{
    if (a_style && a_node.Exists())
        a_style->Unserialize(a_node);
}

void SafeReleaseStyle(const std::shared_ptr<StyleBase>& a_style)
{
    if (a_style)
        a_style->ReleaseStylesResources();
}

long ChangeFontSize(FontCommand a_command, long a_currentHeight, long a_defaultHeight)
{
    // Below zero: there every height has its counterpart.
    const long height = a_currentHeight > 0 ? -a_currentHeight : a_currentHeight;
    if (a_command == EFontIncrease) {
        const auto* const next =
            std::ranges::find_if(S_sizes, [height](long a_size) { return -a_size < height; });
        return next != S_sizes.end() ? -*next : a_currentHeight;
    }
    if (a_command == EFontDecrease) {
        const auto next = std::find_if(S_sizes.rbegin(), S_sizes.rend(),
                                       [height](long a_size) { return -a_size > height; });
        return next != S_sizes.rend() ? -*next : a_currentHeight;
    }
    return a_defaultHeight;
}

void ChangeFontSize(FontCommand a_command, LOGFONTW a_defaultFont, LOGFONTW& a_font)
{
    const long height = ChangeFontSize(a_command, a_font.lfHeight, a_defaultFont.lfHeight);
    a_font.lfHeight = kalvento::internal::NearestInt(std::int64_t{height});
}

void ChangeFontSize(FontCommand a_command, const std::shared_ptr<StyleTextField>& a_defaultStyle,
                    const std::shared_ptr<StyleTextField>& a_style)
{
    if (!a_defaultStyle || !a_style)
        return;
    LOGFONTW font = a_style->GetLOGFONT();
    ChangeFontSize(a_command, a_defaultStyle->GetLOGFONT(), font);
    a_style->SetFont(font, a_command == EFontIncrease || a_command == EFontDecrease);
}

void ChangeFontSize(FontCommand a_command, const std::shared_ptr<StyleBase>& a_defaultStyle,
                    const std::shared_ptr<StyleBase>& a_style)
{
    ChangeFontSize(a_command, std::dynamic_pointer_cast<StyleTextField>(a_defaultStyle),
                   std::dynamic_pointer_cast<StyleTextField>(a_style));
}

std::wstring GetHexRGBColor(COLORREF a_color)
{
    return fmt::format(L"#{:2x}{:2x}{:2x}", a_color & 0xFFU, (a_color >> 8U) & 0xFFU,
                       (a_color >> 16U) & 0xFFU);
}

} // namespace StylesTools
