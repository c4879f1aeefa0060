#include "text_rows/RowBlock.h"

namespace kalvento::rows {

void RowBlock::Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols)
{
    ColumnBlock::Reserve(a_rows, a_columns);
    if (a_symbols && symbols.size() < a_rows)
        symbols.resize(a_rows);
}

void RowBlock::AppendRows(const RowBlock& a_from, std::size_t a_first, std::size_t a_last)
{
    if (!a_from.fractions.empty()) {
        const auto begin = a_from.fractions.begin();
        fractions.resize(rows);
        fractions.insert(fractions.end(), begin + static_cast<std::ptrdiff_t>(a_first),
                         begin + static_cast<std::ptrdiff_t>(a_last));
    }
    Append(a_from, a_first, a_last);
}

} // namespace kalvento::rows
