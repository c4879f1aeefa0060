#include "assets/ParamsBase.h"

#include "settings/Settings.h"

ParamsBase::ParamsBase(const Settings& a_settings)
    : m_kindData(static_cast<unsigned int>(a_settings[XML_KIND_DATA]))
{}

ParamsBase::~ParamsBase() = default;

void ParamsBase::SerializeState(Settings& a_settings) const
{
    a_settings[XML_KIND_DATA] = m_kindData;
}
