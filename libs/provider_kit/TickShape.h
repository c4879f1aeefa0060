#pragma once

#include "series/DSProp.h"

#include <set>

/// The series without the three that aggregation makes: the shape that live rows have and that folding starts from.
std::set<DSProp> TickShapeOf(const std::set<DSProp>& a_series);
