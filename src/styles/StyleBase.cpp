#include "styles/StyleBase.h"

#include "settings/Settings.h"
#include "time/KalventoException.h"

#include <algorithm>

StyleBase::~StyleBase() = default;

void StyleBase::Serialize(Settings& a_node, bool /*a_withChangedFlags*/) const
{
    a_node[TypeClass] = GetTypeName();
}

void StyleBase::Unserialize(const Settings& a_node)
{
    CheckType(a_node);
}

void StyleBase::SerializeTemplate(Settings& a_node) const
{
    StyleBase::Serialize(a_node, false);
}

void StyleBase::UnserializeTemplate(const Settings& a_node)
{
    CheckType(a_node);
    m_isTemplate = true;
}

bool StyleBase::HasChangedParameters() const
{
    return m_isTemplate || !m_changedParameters.empty();
}

void StyleBase::ResetModFlags()
{
    m_isTemplate = false;
    ClearChangedParameters();
}

void StyleBase::SetIsTemplate(bool a_isTemplate)
{
    m_isTemplate = a_isTemplate;
}

bool StyleBase::IsKindOf(InstanceCreator /*a_creator*/) const
{
    return false;
}

void StyleBase::SetGdiObject(std::int64_t /*a_parameter*/, HGDIOBJ /*a_object*/) {}

HGDIOBJ StyleBase::GetGdiObject(std::int64_t /*a_parameter*/)
{
    return nullptr;
}

LOGFONTW StyleBase::GetLOGFONTObject(std::int64_t /*a_parameter*/) const
{
    return {};
}

void StyleBase::ReleaseStylesResources() {}

bool StyleBase::IsChangedParameter(std::int64_t a_parameter) const
{
    return m_isTemplate || FindChangeParameter(a_parameter) != m_changedParameters.end();
}

void StyleBase::CopyModFlags(const StyleBase& a_other)
{
    m_isTemplate = a_other.m_isTemplate;
    m_changedParameters = a_other.m_changedParameters;
}

void StyleBase::SetChangedParameter(std::int64_t a_parameter, bool a_changed)
{
    if (a_changed)
        AddChangeParameter(a_parameter);
    else
        RemoveChangeParameter(a_parameter);
}

void StyleBase::UpdateChangedValueParameter(const std::shared_ptr<StyleBase>& a_other,
                                            std::int64_t a_parameter)
{
    SetChangedParameter(a_parameter, GetValue(a_parameter) != a_other->GetValue(a_parameter));
}

void StyleBase::CorrectChangedParameter(std::int64_t a_from, std::int64_t a_to)
{
    if (RemoveChangeParameter(a_from))
        AddChangeParameter(a_to);
}

void StyleBase::AddChangeParameter(std::int64_t a_parameter)
{
    if (FindChangeParameter(a_parameter) == m_changedParameters.end())
        m_changedParameters.push_back(a_parameter);
}

bool StyleBase::RemoveChangeParameter(std::int64_t a_parameter)
{
    const auto found = FindChangeParameter(a_parameter);
    if (found == m_changedParameters.end())
        return false;
    m_changedParameters.erase(found);
    return true;
}

std::vector<std::int64_t>::const_iterator StyleBase::FindChangeParameter(std::int64_t a_parameter) const
{
    return std::ranges::find(m_changedParameters, a_parameter);
}

void StyleBase::CheckType(const Settings& a_node) const
{
    const Settings& type = a_node[TypeClass];
    const std::string& name = type;
    if (name.empty())
        throw KalventoException("StyleBase::CheckType", __LINE__, "Empty style type");
    if (name != GetTypeName())
        throw KalventoException("StyleBase::CheckType", __LINE__,
                                "Invalid type restored. This should never happen");
}
