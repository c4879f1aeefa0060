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
    void SetFirstValue(bool a_useOhl, double& a_open, double& a_high, double& a_low, double& a_close)
    {
        if (m_type > EAggrTypeOhlcLast)
            RaiseNoMainType("AggrValue::SetFirstValue");
        m_close = a_close;
        m_open = a_useOhl ? a_open : a_close;
        m_high = a_useOhl ? a_high : a_close;
        m_low = a_useOhl ? a_low : a_close;
        a_open = m_open;
        a_high = m_high;
        a_low = m_low;
    }

    /// Main series, each further row: folds by the type and writes the candle back. A type above 2 raises.
    void SumFirstValue(bool a_useOhl, double& a_open, double& a_high, double& a_low, double& a_close)
    {
        if (m_type > EAggrTypeOhlcLast)
            RaiseNoMainType("AggrValue::SumFirstValue");
        const double open = a_useOhl ? a_open : a_close;
        const double high = a_useOhl ? a_high : a_close;
        const double low = a_useOhl ? a_low : a_close;
        switch (m_type) {
        case EAggrTypeOhlc:
            m_close = a_close;
            m_high = high > m_high ? high : m_high;
            m_low = low < m_low ? low : m_low;
            break;
        case EAggrTypeOhlcSum:
            m_close += a_close;
            m_open += open;
            m_high += high;
            m_low += low;
            break;
        case EAggrTypeOhlcLast:
            m_close = a_close;
            m_open = open;
            m_high = high;
            m_low = low;
            break;
        default:
            RaiseUnknownType("AggrValue::SumFirstValue");
        }
        a_open = m_open;
        a_high = m_high;
        a_low = m_low;
        a_close = m_close;
    }

    /// Another field, first row of a window. A type below 3 raises.
    void Set(double a_value)
    {
        if (m_type < EAggrTypeSum)
            RaiseMainType("AggrValue::Set");
        m_close = a_value;
    }

    /// Another field, each further row: folds by the type and writes the result back. A type below 3 or above 4 raises.
    void Sum(double& a_value)
    {
        if (m_type < EAggrTypeSum)
            RaiseMainType("AggrValue::Sum");
        if (m_type > EAggrTypeLast)
            RaiseUnknownType("AggrValue::Sum");
        m_close = m_type == EAggrTypeSum ? m_close + a_value : a_value;
        a_value = m_close;
    }

    /// Zeroes the four numbers; the type stays.
    void Clear() { m_close = m_open = m_high = m_low = 0.0; }

    EAggrType GetType() const { return m_type; }

    double m_close = 0.0;
    double m_open = 0.0;
    double m_high = 0.0;
    double m_low = 0.0;

private:
    [[noreturn]] static void RaiseNoMainType(const char* a_place);
    [[noreturn]] static void RaiseMainType(const char* a_place);
    [[noreturn]] static void RaiseUnknownType(const char* a_place);

    EAggrType m_type;
};
