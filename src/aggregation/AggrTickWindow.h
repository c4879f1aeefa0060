#pragma once

#include "aggregation/AggrBase.h"

#include <cstddef>

/// Windows of a fixed number of rows, counted anew each day. They have no bounds in time, so the operations on bounds
/// and numbers raise KalventoException, and only EFirstRecordTime and ELastRecordTime are accepted. Made by
/// AggrWindowsFactory only.
class KALVENTO_API AggrTickWindow : public AggrBase {
public:
    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const override;
    bool IsInCurrentWindow(const NDateTime& a_time) override;
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;
    int GetWindowNumber(const NDateTime& a_time) const override;

    /// Rows that the open window still takes, if they stay on its day.
    std::size_t RowsLeft() const { return static_cast<std::size_t>(m_multiplicity - 1 - m_tickCounter); }
    /// a_rows further rows, at most RowsLeft(), of the open window's day went into it.
    void CountRows(std::size_t a_rows) { m_tickCounter += static_cast<int>(a_rows); }

private:
    friend class AggrWindowsFactory;
    AggrTickWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    int m_tickCounter = -1; // rows in the open window after its first
};
