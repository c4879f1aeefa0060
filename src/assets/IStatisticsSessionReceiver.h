#pragma once

#include "platform/Export.h"

class SessionStatistics;

/// Receives a market's session statistics. The provider calls on a thread of its own choice, and the receiver outlives
/// its registration there; the statistics are good only during the call.
class KALVENTO_API IStatisticsSessionReceiver {
public:
    virtual ~IStatisticsSessionReceiver() = default;

    /// The first summary of a session: whatever was known before belongs to an earlier one.
    virtual void SessionStatisticsStarted(const SessionStatistics& a_statistics) = 0;
    /// A newer, complete summary of the same session, which replaces the last one.
    virtual void SessionStatisticsChanged(const SessionStatistics& a_statistics) = 0;
};
