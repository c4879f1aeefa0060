#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"
#include "platform/LOGFONTW.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class Settings;

/// How one kind of window paints itself, and which of its parameters the user changed away from the skin. When the skin
/// changes, a window's style takes the parameters that are not marked as changed from the new skin's style; the marked
/// ones stay. A style that is a template counts as changed in every parameter.
///
/// Held by std::shared_ptr, shared among a skin, its modules and their windows. Main thread only. The order of the
/// virtual operations is an interface with plug-ins.
class KALVENTO_API StyleBase {
public:
    /// Makes a style of one type, as it is before anything is read into it.
    using InstanceCreator = std::shared_ptr<StyleBase> (*)();

    /// The key under which every stored style names its type.
    static constexpr std::string_view TypeClass = "TypeClassId";

    virtual ~StyleBase();

    /// A parameter's value as a number; 0 for one without.
    virtual std::int64_t GetValue(std::int64_t a_parameter) const = 0;
    /// Sets the value and leaves the marks alone.
    virtual void SetValue(std::int64_t a_parameter, std::int64_t a_value) = 0;

    /// The four of storing. Whatever writes expects an empty node: nothing is removed from it.
    /// With a_withChangedFlags the marks are written too, if the type stores them.
    virtual void Serialize(Settings& a_node, bool a_withChangedFlags) const;
    /// Raises KalventoException where the node doesn't name this style's type; then the style is unchanged.
    virtual void Unserialize(const Settings& a_node);
    virtual void SerializeTemplate(Settings& a_node) const;
    /// The style is a template afterwards. Raises as Unserialize does.
    virtual void UnserializeTemplate(const Settings& a_node);

    /// The name that the type is registered and stored under.
    virtual std::string GetTypeName() const { return "StyleBase"; }
    /// May be empty.
    virtual std::shared_ptr<StyleBase> DefaultStyle() const = 0;
    /// After an edit: marks the parameter if it differs from the other style's, else takes the mark away.
    virtual void UpdateChangedParameter(std::shared_ptr<StyleBase> a_other, std::int64_t a_parameter) = 0;
    /// True for a template too.
    virtual bool HasChangedParameters() const;
    /// No marks, no template.
    virtual void ResetModFlags();
    virtual void SetIsTemplate(bool a_isTemplate);
    /// Whether that creator makes this style's type.
    virtual bool IsKindOf(InstanceCreator a_creator) const;

    /// Takes what the object (a font) describes; the object stays the caller's.
    virtual void SetGdiObject(std::int64_t a_parameter, HGDIOBJ a_object);
    /// The object stays the style's; null where the parameter has none.
    virtual HGDIOBJ GetGdiObject(std::int64_t a_parameter);
    /// All zero where the parameter is no font.
    virtual LOGFONTW GetLOGFONTObject(std::int64_t a_parameter) const;
    /// The last window that uses the style has gone.
    virtual void ReleaseStylesResources();

    /// True for each parameter of a template.
    bool IsChangedParameter(std::int64_t a_parameter) const;
    /// Takes over the marks and whether the style is a template.
    void CopyModFlags(const StyleBase& a_other);

protected:
    StyleBase() = default;
    StyleBase(const StyleBase&) = default;
    StyleBase& operator=(const StyleBase&) = default;

    /// Sets the mark or takes it away.
    void SetChangedParameter(std::int64_t a_parameter, bool a_changed);
    /// Takes all marks away; a template stays one.
    void ClearChangedParameters() { m_changedParameters.clear(); }
    /// Marks the parameter if its GetValue differs from the other style's, else takes the mark away.
    void UpdateChangedValueParameter(const std::shared_ptr<StyleBase>& a_other, std::int64_t a_parameter);
    /// Moves a mark from one parameter to another, if it is there.
    void CorrectChangedParameter(std::int64_t a_from, std::int64_t a_to);

private:
    void AddChangeParameter(std::int64_t a_parameter);
    /// Whether it was there.
    bool RemoveChangeParameter(std::int64_t a_parameter);
    std::vector<std::int64_t>::const_iterator FindChangeParameter(std::int64_t a_parameter) const;
    void CheckType(const Settings& a_node) const;

    bool m_isTemplate = false;
    std::vector<std::int64_t> m_changedParameters; // in the order of marking, each once
};
