#pragma once

#include "alerts/AlertArgumentSourceChart.h"
#include "platform/CString.h"
#include "platform/Export.h"
#include "series/DSProp.h"

#include <optional>
#include <string>

class CArchive;

/// What an alert watches: a series of an instrument, or an output of an indicator on a chart. A value type: copies are
/// independent, one thread at a time, readers included, since SetNoChartWindowId writes to a constant object.
class KALVENTO_API AlertArgumentDescription {
public:
    /// Nothing is set.
    AlertArgumentDescription() = default;
    explicit AlertArgumentDescription(const std::string& a_isin) : m_isin(a_isin) {}
    /// a_name, a_description: for the user; null is an empty text.
    AlertArgumentDescription(const std::string& a_isin, const DSProp& a_series, const wchar_t* a_name,
                             const wchar_t* a_description);
    /// An argument from a chart. The chart's interval is added to the name: "Kurs" becomes "Kurs (5 min.)".
    AlertArgumentDescription(const std::string& a_isin, const DSProp& a_series, const wchar_t* a_name,
                             const wchar_t* a_description, int a_pointerType,
                             unsigned long long a_pointerRequestId, unsigned long long a_pointerSeriesIndex,
                             AlertArgumentSourceChart&& a_sourceChart);

    const std::string& GetISIN() const { return m_isin; }
    const std::optional<DSProp>& GetDSProp() const { return m_series; }
    const CString& GetArgumentName() const { return m_name; }
    const CString& GetArgumentDescription() const { return m_description; }
    /// Kind of the base pointer on the chart; the chart modules know the numbers.
    int GetPointerType() const { return m_pointerType; }
    /// Identifier of the request behind the pointer.
    unsigned long long GetPointerRequestID() const { return m_pointerRequestId; }
    /// Index of the output series at the pointer.
    unsigned long long PointerSeriesIndex() const { return m_pointerSeriesIndex; }
    const std::optional<AlertArgumentSourceChart>& GetSourceChart() const { return m_sourceChart; }

    /// The window of the argument: the chart's, 0 where the chart doesn't know it; without a chart, what
    /// SetNoChartWindowId set, 0 before.
    long long GetSourceChartWindowId() const;
    void SetNoChartWindowId(long long a_windowId) const { m_noChartWindowId = a_windowId; }

    /// The isin has a character that isn't white space.
    bool IsValid() const;
    /// The series to watch on the instrument: Price stands in for an indicator; 0 where no series is set.
    ESeriesId FindActualPointerSeries() const;

    /// Writes the binary form, all but the window without a chart. On an archive that loads, CArchiveException.
    void SerializeToArchive(CArchive& a_archive) const;
    /// Reads the binary form; the window without a chart stays as it is. Raises CArchiveException for bytes that end
    /// early or make no sense, std::runtime_error for a tree that can't be read, KalventoException for a chart that
    /// ChartParameters refuses; then this object is as before.
    void UnserializeFromArchive(CArchive& a_archive);

private:
    std::string m_isin;
    std::optional<DSProp> m_series;
    CString m_name;
    CString m_description;
    int m_pointerType = 0;
    unsigned long long m_pointerRequestId = 0;
    unsigned long long m_pointerSeriesIndex = 0;
    std::optional<AlertArgumentSourceChart> m_sourceChart;
    mutable long long m_noChartWindowId = 0;
};
