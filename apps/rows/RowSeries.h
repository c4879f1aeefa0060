#pragma once

#include "series/DSProp.h"

#include <set>

namespace kalvento::tool {

struct RowLayout;

/// The series of rows with how each of them folds, as the folding of single rows wants them. Without precisions.
std::set<DSProp> PropertiesOf(const RowLayout& a_layout);

} // namespace kalvento::tool
