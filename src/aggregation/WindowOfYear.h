#pragma once

#include "aggregation/AggrBase.h"

namespace kalvento::internal {

/// What windows of days, weeks and months share: they are counted anew from each 1 January, so a window is a number and
/// a year.
class WindowOfYear : public AggrBase {
public:
    bool IsInCurrentWindow(const NDateTime& a_time) override
    {
        const int window = GetWindowNumber(a_time);
        const int year = static_cast<int>(a_time.GetYear());
        // Without an open window nothing matches, not even the number -1 that a time outside any calendar can have.
        if (m_currentDay != -1 && window == m_currentWindow && year == m_currentYear)
            return true;
        m_currentWindow = window;
        m_currentYear = year;
        m_currentDay = static_cast<int>(a_time.GetDayOfYear());
        return false;
    }

protected:
    using AggrBase::AggrBase;

private:
    int m_currentYear = -1;
};

} // namespace kalvento::internal
