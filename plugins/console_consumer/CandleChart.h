#pragma once

#include "console_consumer/ScreenCells.h"
#include "console_consumer/ScreenModel.h"

/// The candles as a chart: one column each, prices at the right, times below and, where there is room, bars of the
/// volume.
class CandleChart {
public:
    /// Both outlive the chart.
    CandleChart(const ScreenModel& a_model, ScreenCells& a_cells) : m_model(a_model), m_cells(a_cells) {}
    void Draw(ScreenArea a_area);

private:
    struct Scale;

    void DrawAxis(const Scale& a_scale, int a_column, int a_top);
    void DrawCandle(std::size_t a_row, const Scale& a_scale, int a_column, int a_top);
    void DrawVolumes(std::size_t a_first, ScreenArea a_area);
    void DrawTimes(std::size_t a_first, ScreenArea a_area);

    const ScreenModel& m_model;
    ScreenCells& m_cells;
};
