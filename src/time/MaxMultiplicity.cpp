#include "time/MaxMultiplicity.h"

namespace kalvento::internal {

unsigned int GetMaxMultiplicity(EInterval a_interval)
{
    switch (a_interval) {
    case EIntervalTick:
    case EIntervalYear:
        return S_unlimitedMultiplicity;
    case EIntervalSecond:
    case EIntervalMinute:
        return 59;
    case EIntervalHour:
        return 24;
    case EIntervalDay:
        return 365;
    case EIntervalWeek:
        return 51;
    case EIntervalMonth:
        return 11;
    case EIntervalEmpty:
        break;
    }
    return 1;
}

} // namespace kalvento::internal
