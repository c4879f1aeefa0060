#include "text_rows/RowBlock.h"

namespace kalvento::tool {

void RowBlock::Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols)
{
    if (times.size() < a_rows)
        times.resize(a_rows);
    columns.resize(a_columns);
    for (std::vector<double>& column : columns) {
        if (column.size() < a_rows)
            column.resize(a_rows);
    }
    if (a_symbols && symbols.size() < a_rows)
        symbols.resize(a_rows);
}

} // namespace kalvento::tool
