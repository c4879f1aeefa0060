#include "aggregation/AggrBase.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

AggrBase::AggrBase(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : m_multiplicity(a_multiplicity), m_timeResult(a_timeResult)
{
    if (a_multiplicity == 0)
        throw KalventoException("AggrBase::AggrBase", __LINE__,
                                "Wyjątek AggrBase! Krotność interwału musi być większa od 0."_cp1250);
}

void AggrBase::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    const int window = GetWindowNumber(a_time);
    if (a_begin != nullptr)
        *a_begin = GetBeginingOfWindowTime(a_time, window);
    if (a_end != nullptr)
        *a_end = GetBorderOfWindowTime(a_time, window);
}
