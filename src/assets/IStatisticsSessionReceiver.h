#pragma once

#include "platform/Export.h"

class SessionStatistics;

/// Who wants to be told of a market's session statistics. The provider calls on a thread of its own choice, and the
/// receiver outlives its registration there; the statistics are good during the call only.
class KALVENTO_API IStatisticsSessionReceiver {
public:
    IStatisticsSessionReceiver() = default;
    IStatisticsSessionReceiver(const IStatisticsSessionReceiver&) = default;
    IStatisticsSessionReceiver& operator=(const IStatisticsSessionReceiver&) = default;
    virtual ~IStatisticsSessionReceiver() = default;

    /// The first summary of a session: whatever was known before belongs to another one.
    virtual void SessionStatisticsStarted(const SessionStatistics& a_statistics) = 0;
    /// A newer summary of the same session, complete, to put in the place of the last one.
    virtual void SessionStatisticsChanged(const SessionStatistics& a_statistics) = 0;
};
