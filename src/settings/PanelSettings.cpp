#include "settings/PanelSettings.h"

#include "platform/DpiHelper.h"
#include "settings/Settings.h"

CRect PanelSettings::DefaultInspectorPosition()
{
    return {10, 10, 110, 110};
}

bool PanelSettings::DefaultInspectorVisibility()
{
    return true;
}

void PanelSettings::SerializeState(Settings& a_settings) const
{
    Settings& node = a_settings[XML_PANEL_SETTINGS];
    node[XML_INSPECTOR_POSITION] = XTPDpiHelper().Unscale(m_inspectorPosition);
    node[XML_INSPECTOR_VISIBLE] = m_inspectorVisible;
}

void PanelSettings::UnSerializeState(const Settings& a_settings)
{
    const Settings& node = a_settings[XML_PANEL_SETTINGS];
    if (!node.Exists())
        return;
    m_inspectorPosition = XTPDpiHelper().Scale(static_cast<CRect>(node[XML_INSPECTOR_POSITION]));
    m_inspectorVisible = node[XML_INSPECTOR_VISIBLE];
}
