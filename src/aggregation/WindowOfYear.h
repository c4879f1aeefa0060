#pragma once

#include "aggregation/AggrBase.h"

namespace kalvento::internal {

/// What windows of days, weeks and months share: they are counted anew from each 1 January, so a window is a number and a
/// year.
class WindowOfYear : public AggrBase {
protected:
    using AggrBase::AggrBase;

    /// The result of IsInCurrentWindow for a time that lies in this window of its year.
    bool StaysInWindow(const NDateTime& a_time, int a_window)
    {
        const int year = static_cast<int>(a_time.GetYear());
        // Without an open window nothing matches, also not the number -1 that a time without a calendar can have.
        if (m_currentDay != -1 && a_window == m_currentWindow && year == m_currentYear)
            return true;
        m_currentWindow = a_window;
        m_currentYear = year;
        m_currentDay = static_cast<int>(a_time.GetDayOfYear());
        return false;
    }

private:
    int m_currentYear = -1;
};

} // namespace kalvento::internal
