#include "aggregation/AggrWindowsFactory.h"

#include "aggregation/AggrDayWindow.h"
#include "aggregation/AggrHourWindow.h"
#include "aggregation/AggrMinuteWindow.h"
#include "aggregation/AggrMonthWindow.h"
#include "aggregation/AggrSecondWindow.h"
#include "aggregation/AggrTickWindow.h"
#include "aggregation/AggrWeekWindow.h"
#include "aggregation/AggrYearWindow.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

std::unique_ptr<AggrBase> AggrWindowsFactory::GetAggrWindowClass(EInterval a_interval,
                                                                 unsigned short a_multiplicity,
                                                                 EAggrTimeResult a_timeResult)
{
    switch (a_interval) {
    case EIntervalTick:
        return std::unique_ptr<AggrBase>(new AggrTickWindow(a_multiplicity, a_timeResult));
    case EIntervalSecond:
        return std::unique_ptr<AggrBase>(new AggrSecondWindow(a_multiplicity, a_timeResult));
    case EIntervalMinute:
        return std::unique_ptr<AggrBase>(new AggrMinuteWindow(a_multiplicity, a_timeResult));
    case EIntervalHour:
        return std::unique_ptr<AggrBase>(new AggrHourWindow(a_multiplicity, a_timeResult));
    case EIntervalDay:
        return std::unique_ptr<AggrBase>(new AggrDayWindow(a_multiplicity, a_timeResult));
    case EIntervalWeek:
        return std::unique_ptr<AggrBase>(new AggrWeekWindow(a_multiplicity, a_timeResult));
    case EIntervalMonth:
        return std::unique_ptr<AggrBase>(new AggrMonthWindow(a_multiplicity, a_timeResult));
    case EIntervalYear:
        return std::unique_ptr<AggrBase>(new AggrYearWindow(a_multiplicity, a_timeResult));
    case EIntervalEmpty:
        break;
    }
    throw KalventoException("AggrWindowsFactory::GetAggrWindowClass", __LINE__,
                            "Wyjątek AggrWindowsFactory! Nieznany interwał."_cp1250);
}
