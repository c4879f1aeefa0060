#include "text_rows/RowBlock.h"

namespace kalvento::rows {

void RowBlock::Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols)
{
    ColumnBlock::Reserve(a_rows, a_columns);
    if (a_symbols && symbols.size() < a_rows)
        symbols.resize(a_rows);
}

} // namespace kalvento::rows
