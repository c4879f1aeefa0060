#pragma once

#include "settings/Settings.h"

#include <string_view>

/// Takes the value of that key over; an absent key leaves what was there, as a default or from an earlier tree.
template<class Value>
void TakeSetting(const Settings& a_settings, std::string_view a_key, Value& a_value)
{
    if (const Settings& node = a_settings[a_key]; node.Exists())
        a_value = static_cast<Value>(node);
}
