#include "text_rows/RowsFault.h"

#include <utility>

namespace kalvento::rows {

std::string RowsFault::Parts::GetPlace() const
{
    if (file.empty())
        return {};
    if (line == 0)
        return file + ": ";
    return file + ':' + std::to_string(line) + ':' + std::to_string(column) + ": ";
}

std::string RowsFault::Parts::GetText() const
{
    if (expected.empty())
        return found;
    return found + (found.starts_with("found ") ? ", expected " : "; expected ") + expected;
}

RowsFault::RowsFault(Parts a_parts)
    : std::runtime_error(a_parts.GetPlace() + a_parts.GetText()), m_parts(std::move(a_parts))
{}

void RefuseOption(EReadOption a_option, std::string a_found, std::string a_expected)
{
    throw RowsFault({.kind = EFaultOptions,
                     .wrong = a_option,
                     .found = std::move(a_found),
                     .expected = std::move(a_expected)});
}

} // namespace kalvento::rows
