#include "alerts/AlertArgumentDescription.h"

#include "alerts/WhiteSpace.h"
#include "platform/CArchive.h"
#include "platform/CodePage.h"
#include "settings/SettingsArchive.h"
#include "time/IntervalTranslator.h"

#include <cstddef>
#include <utility>

namespace {

CString TextOf(const wchar_t* a_text)
{
    return a_text == nullptr ? CString() : CString(a_text);
}

// The stored form has 16-bit units, whatever the width of a wide character here.

void WriteWideText(CArchive& a_archive, const CString& a_text)
{
    const std::u16string units = CodePage::WideToUtf16(a_text);
    AfxWriteStringLength(a_archive, units.size(), true);
    a_archive.Write(units.data(), units.size() * sizeof(char16_t));
}

CString ReadWideText(CArchive& a_archive)
{
    int unitSize = 0;
    const auto length = static_cast<std::size_t>(AfxReadStringLength(a_archive, unitSize));
    if (unitSize == 1) {
        // Nobody writes this, but the length says plainly what follows.
        std::string text(length, '\0');
        a_archive.Read(text.data(), length);
        return CodePage::Cp1250ToWide(text);
    }
    std::u16string units(length, u'\0');
    a_archive.Read(units.data(), length * sizeof(char16_t));
    return CodePage::Utf16ToWide(units);
}

} // namespace

AlertArgumentDescription::AlertArgumentDescription(const std::string& a_isin, const DSProp& a_series,
                                                   const wchar_t* a_name, const wchar_t* a_description)
    : m_isin(a_isin), m_series(a_series), m_name(TextOf(a_name)), m_description(TextOf(a_description))
{}

AlertArgumentDescription::AlertArgumentDescription(const std::string& a_isin, const DSProp& a_series,
                                                   const wchar_t* a_name, const wchar_t* a_description,
                                                   int a_pointerType, unsigned long long a_pointerRequestId,
                                                   unsigned long long a_pointerSeriesIndex,
                                                   AlertArgumentSourceChart&& a_sourceChart)
    : AlertArgumentDescription(a_isin, a_series, a_name, a_description)
{
    m_pointerType = a_pointerType;
    m_pointerRequestId = a_pointerRequestId;
    m_pointerSeriesIndex = a_pointerSeriesIndex;
    m_sourceChart = std::move(a_sourceChart);

    const AlertArgumentSourceChart::ChartParameters& chart = m_sourceChart->parameters;
    m_name += L" (" + IntervalTranslator::ToDescription(chart.interval, chart.multiplicity) + L")";
}

long long AlertArgumentDescription::GetSourceChartWindowId() const
{
    if (!m_sourceChart)
        return m_noChartWindowId;
    return m_sourceChart->windowId.value_or(0);
}

bool AlertArgumentDescription::IsValid() const
{
    return !kalvento::internal::IsWhiteSpaceOnly(m_isin);
}

ESeriesId AlertArgumentDescription::FindActualPointerSeries() const
{
    if (!m_series)
        return ESeriesId{};
    return m_series->GetSeriesID() == Indicator ? Price : m_series->GetSeriesID();
}

void AlertArgumentDescription::SerializeToArchive(CArchive& a_archive) const
{
    SettingsArchive::WriteText(a_archive, m_isin);
    WriteWideText(a_archive, m_name);
    WriteWideText(a_archive, m_description);
    a_archive << m_pointerType << m_pointerRequestId << m_pointerSeriesIndex;
    SettingsArchive::WriteOptional(a_archive, m_series);
    SettingsArchive::WriteOptional(a_archive, m_sourceChart);
}

void AlertArgumentDescription::UnserializeFromArchive(CArchive& a_archive)
{
    AlertArgumentDescription read(SettingsArchive::ReadText(a_archive));
    read.m_name = ReadWideText(a_archive);
    read.m_description = ReadWideText(a_archive);
    a_archive >> read.m_pointerType >> read.m_pointerRequestId >> read.m_pointerSeriesIndex;
    read.m_series = SettingsArchive::ReadOptional<DSProp>(a_archive);
    read.m_sourceChart = SettingsArchive::ReadOptional<AlertArgumentSourceChart>(a_archive);
    read.m_noChartWindowId = m_noChartWindowId;
    *this = std::move(read);
}
