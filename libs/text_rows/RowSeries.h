#pragma once

#include "series/DSProp.h"
#include "series/DataSeriesSet.h"

#include <cstddef>
#include <set>
#include <vector>

namespace kalvento::rows {

struct RowBlock;
struct RowLayout;

/// The series of the rows and how each of them folds, as folding single rows needs them. Without precisions.
std::set<DSProp> PropertiesOf(const RowLayout& a_layout);

/// The rows of a_block at these places, as a set of the layout's interval.
DataSeriesSet SeriesOf(const RowBlock& a_block, const RowLayout& a_layout,
                       const std::vector<std::size_t>& a_rows);

/// The most decimal places that are told apart.
inline constexpr unsigned int S_mostDecimals = 6;

/// How many decimal places the price needs, 0 to S_mostDecimals.
unsigned int DecimalsOf(double a_price);
/// Prices of rows and candles are to be shown with this many, at least two.
void SetDecimals(const std::set<DSProp>& a_series, unsigned int a_decimals);

} // namespace kalvento::rows
