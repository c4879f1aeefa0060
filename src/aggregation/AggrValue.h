#pragma once

#include "aggregation/EAggrType.h"
#include "platform/Export.h"

/// The running value of one field in the open candle. The main series uses all four numbers, every other field only
/// close. A plain value; one thread at a time.
class KALVENTO_API AggrValue {
public:
    explicit AggrValue(EAggrType a_type) : m_type(a_type) {}

    /// Main series, first row of a window: takes the row (open, high and low from the close unless a_useOhl) and writes
    /// the candle back to the row. A type above 2 raises KalventoException.
    void SetFirstValue(bool a_useOhl, double& a_open, double& a_high, double& a_low, double& a_close);
    /// Main series, each further row: folds by the type and writes the candle back. A type above 2 raises.
    void SumFirstValue(bool a_useOhl, double& a_open, double& a_high, double& a_low, double& a_close);
    /// Another field, first row of a window. A type below 3 raises.
    void Set(double a_value);
    /// Another field, each further row: folds by the type and writes the result back. A type below 3 or above 4 raises.
    void Sum(double& a_value);
    /// Zeroes the four numbers; the type stays.
    void Clear() { m_close = m_open = m_high = m_low = 0.0; }

    EAggrType GetType() const { return m_type; }

    double m_close = 0.0;
    double m_open = 0.0;
    double m_high = 0.0;
    double m_low = 0.0;

private:
    EAggrType m_type;
};
