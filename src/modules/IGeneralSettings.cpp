#include "modules/IGeneralSettings.h"

IGeneralSettings::~IGeneralSettings() = default;
