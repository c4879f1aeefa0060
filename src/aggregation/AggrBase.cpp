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
