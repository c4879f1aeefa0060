#pragma once

#include <algorithm>
#include <cstdint>

namespace kalvento::internal {

/// The slots of a day for windows below a day: a_window of a_multiplicity slots begins at this slot. May be a_slots or
/// above (the next day's first window), never below 0.
inline std::int64_t FirstSlot(std::int64_t a_window, unsigned short a_multiplicity)
{
    return std::max<std::int64_t>(0, a_window * a_multiplicity);
}

/// The window in which a slot lies. Windows of one slot are frequent, and a division is most of what placing a row
/// costs.
inline int WindowOfSlot(int a_slot, unsigned short a_multiplicity)
{
    return a_multiplicity == 1 ? a_slot : a_slot / a_multiplicity;
}

/// The last slot of a window, cut at the end of the day; from 0 to a_slots - 1.
inline int LastSlot(std::int64_t a_window, unsigned short a_multiplicity, int a_slots)
{
    const std::int64_t end = std::clamp<std::int64_t>((a_window + 1) * a_multiplicity, 1, a_slots);
    return static_cast<int>(end - 1);
}

/// A table's entry; a place outside (parts of a time that no calendar has) is taken at the first one.
template<typename Table>
auto EntryOrFirst(const Table& a_table, std::size_t a_place)
{
    return a_table[a_place < a_table.size() ? a_place : 0];
}

} // namespace kalvento::internal
