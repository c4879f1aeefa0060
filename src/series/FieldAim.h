#pragma once

#include "series/ESeriesId.h"

#include <cstddef>
#include <vector>

namespace kalvento::internal {

/// Brings series into the order of the engine's fields: open, high, low, main series, then all others as they come.
/// A record or block from outside may repeat a series or lack one, which would leave a field aimed at an earlier
/// column: use the fields only where IsComplete says so.
class FieldAim {
public:
    /// Borrows a_fields, whose size stays; its entries are overwritten one by one.
    FieldAim(ESeriesId a_main, std::vector<double*>& a_fields)
        : m_main(a_main), m_fields(a_fields.data()), m_size(a_fields.size())
    {}

    void Aim(ESeriesId a_seriesId, double* a_values)
    {
        std::size_t field = 0;
        if (a_seriesId >= IntervalOpen && a_seriesId <= IntervalMin) {
            field = a_seriesId - IntervalOpen;
            m_aimed |= 1U << field;
        } else if (a_seriesId == m_main) {
            field = S_mainField;
            m_aimed |= 1U << field;
        } else {
            field = m_nextOther++;
        }
        ++m_count;
        if (field < m_size)
            m_fields[field] = a_values;
    }

    /// Every field was aimed, each of the first four by exactly one series.
    bool IsComplete() const
    {
        return m_aimed == S_allOfFirstFour && m_count == m_size && m_nextOther == m_count;
    }

private:
    static constexpr std::size_t S_mainField = 3;
    static constexpr unsigned int S_allOfFirstFour = 0xFU;

    ESeriesId m_main;
    double** m_fields;
    std::size_t m_size;
    std::size_t m_nextOther = S_mainField + 1;
    std::size_t m_count = 0;
    unsigned int m_aimed = 0; // a bit for each of the first four fields
};

} // namespace kalvento::internal
