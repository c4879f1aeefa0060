#include "aggregation/AggrValue.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

void AggrValue::SetFirstValue(bool a_useOhl, double& a_open, double& a_high, double& a_low, double& a_close)
{
    if (m_type > EAggrTypeOhlcLast)
        throw KalventoException("AggrValue::SetFirstValue", __LINE__,
                                "Wyjątek AggrValue! Niedozwolony typ agregacji na pierwszym polu."_cp1250);
    m_close = a_close;
    m_open = a_useOhl ? a_open : a_close;
    m_high = a_useOhl ? a_high : a_close;
    m_low = a_useOhl ? a_low : a_close;
    a_open = m_open;
    a_high = m_high;
    a_low = m_low;
}

void AggrValue::SumFirstValue(bool a_useOhl, double& a_open, double& a_high, double& a_low, double& a_close)
{
    if (m_type > EAggrTypeOhlcLast)
        throw KalventoException("AggrValue::SumFirstValue", __LINE__,
                                "Wyjątek AggrValue! Niedozwolony typ agregacji na pierwszym polu."_cp1250);
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
        throw KalventoException("AggrValue::SumFirstValue", __LINE__,
                                "Wyjątek AggrValue! Nieznany typ agregacji"_cp1250);
    }
    a_open = m_open;
    a_high = m_high;
    a_low = m_low;
    a_close = m_close;
}

void AggrValue::Set(double a_value)
{
    if (m_type < EAggrTypeSum)
        throw KalventoException("AggrValue::Set", __LINE__,
                                "Wyjątek AggrValue! Niedozwolony typ agregacji na polu zwykłym."_cp1250);
    m_close = a_value;
}

void AggrValue::Sum(double& a_value)
{
    if (m_type < EAggrTypeSum)
        throw KalventoException("AggrValue::Sum", __LINE__,
                                "Wyjątek AggrValue! Niedozwolony typ agregacji na polu zwykłym."_cp1250);
    if (m_type > EAggrTypeLast)
        throw KalventoException("AggrValue::Sum", __LINE__,
                                "Wyjątek AggrValue! Nieznany typ agregacji"_cp1250);
    m_close = m_type == EAggrTypeSum ? m_close + a_value : a_value;
    a_value = m_close;
}
