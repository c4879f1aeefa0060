#pragma once

#include "platform/CRect.h"
#include "platform/Export.h"

#include <string_view>
#include <utility>

class Settings;

/// The small state of a panel: where its inspector is and whether it shows. A plain value.
class KALVENTO_API PanelSettings {
public:
    static constexpr std::string_view XML_PANEL_SETTINGS = "PanelSettings";
    static constexpr std::string_view XML_INSPECTOR_POSITION = "InspPos";
    static constexpr std::string_view XML_INSPECTOR_VISIBLE = "InspVis";

    /// (10, 10, 110, 110).
    static CRect DefaultInspectorPosition();
    /// True.
    static bool DefaultInspectorVisibility();

    /// In pixels at the present dpi.
    void SetInspectorPosition(CRect a_position) { m_inspectorPosition = a_position; }
    void SetInspectorVisible(bool a_visible) { m_inspectorVisible = a_visible; }
    /// Position at the present dpi, and visibility.
    std::pair<CRect, bool> GetInspectorData() const { return {m_inspectorPosition, m_inspectorVisible}; }

    /// Writes the sub-node "PanelSettings", the position in pixels at 96 dpi.
    void SerializeState(Settings& a_settings) const;
    /// Where the sub-node is missing, everything stays.
    void UnSerializeState(const Settings& a_settings);

private:
    CRect m_inspectorPosition = DefaultInspectorPosition();
    bool m_inspectorVisible = DefaultInspectorVisibility();
};
