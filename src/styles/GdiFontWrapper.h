#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"
#include "platform/LOGFONTW.h"

#include <memory>
#include <string>

class Settings;

/// A font by its description, with the object that windows paint with, made when it is first asked for. A value type:
/// copies share that object until one of them changes; the last one deletes it. Main thread.
///
/// Its stored form is a Settings node; docs/styles.md has the keys.
class KALVENTO_API GdiFontWrapper {
public:
    /// "DejaVu Sans" of 12 pixels. a_forcedWeight: takes the place of every weight that this object is given; 0 forces
    /// none.
    explicit GdiFontWrapper(long a_forcedWeight);

    /// a_weight: the weight forced from now on, 0 for none. A name without an ending zero loses its last character. Where
    /// the description stays the same, so does the object.
    void FromLOGFONT(const LOGFONTW& a_font, long a_weight);
    const LOGFONTW& GetLOGFONT() const { return m_font; }
    std::wstring GetFaceName() const { return std::wstring(m_font.FaceName()); }

    /// Whether the descriptions differ in anything.
    bool operator!=(const GdiFontWrapper& a_other) const { return !(m_font == a_other.m_font); }

    /// The object to paint with, valid until this font changes or dies. Never null.
    HFONT GetHFONT() const;
    HGDIOBJ GetHGDIOBJ() const { return GetHFONT(); }

    /// Writes all keys.
    void Serialize(Settings& a_node) const;
    /// A key that is missing, and a height, width or weight that no screen can show, count as those of a new object:
    /// the node comes from a file that anybody may have edited. The forced weight stays.
    void Unserialize(const Settings& a_node);

private:
    LOGFONTW m_font;
    long m_forcedWeight;
    mutable std::shared_ptr<HFontTag> m_object; // null until asked for
};
