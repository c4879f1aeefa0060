#include "file_provider/PartWriter.h"

#include "file_provider/Fingerprint.h"
#include "file_provider/StoreLog.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FileTools.h"
#include "text_rows/RowSeries.h"

#include <algorithm>
#include <sstream>
#include <system_error>
#include <utility>

namespace kalvento::files {

namespace {

// Rows of all instruments that wait to become a part; with many instruments their parts get smaller.
constexpr std::uint64_t S_waitingRows = std::uint64_t{1} << 20U;

} // namespace

PartWriter::PartWriter(const PartFiles& a_files, CacheContents& a_contents, std::atomic<bool>& a_failureTold,
                       bool a_storesRows)
    : m_files(a_files),
      m_contents(a_contents),
      m_failureTold(a_failureTold),
      m_hasSymbols(a_contents.symbols.empty()),
      m_storesRows(a_storesRows),
      m_waiting(a_contents.symbols.size()),
      m_written(a_storesRows)
{}

void PartWriter::Add(const rows::RowBlock& a_block, const std::vector<std::string>& a_names)
{
    for (std::size_t place = m_contents.symbols.size(); place < a_names.size(); ++place)
        m_contents.symbols.emplace_back().symbol = a_names[place];
    m_waiting.resize(m_contents.symbols.size());
    for (std::size_t row = 0; row < a_block.rows; ++row)
        AddRow(m_hasSymbols ? a_block.symbols[row] : 0, a_block, row);
}

bool PartWriter::Finish()
{
    for (std::size_t symbol = 0; symbol < m_waiting.size(); ++symbol)
        Flush(symbol);
    return m_written;
}

void PartWriter::AddRow(std::size_t a_symbol, const rows::RowBlock& a_block, std::size_t a_row)
{
    Waiting& waiting = m_waiting[a_symbol];
    CacheContents::Symbol& symbol = m_contents.symbols[a_symbol];
    waiting.columns.resize(m_contents.series.size());
    const NDateTime& time = a_block.times[a_row];
    waiting.times.push_back(time);
    symbol.hasTimesOfDay = symbol.hasTimesOfDay || time.GetAbsoluteTime() != 0;
    for (std::size_t column = 0; column < waiting.columns.size(); ++column) {
        const double value = a_block.columns[column][a_row];
        waiting.columns[column].push_back(value);
        if (m_contents.series[column] == Price && symbol.decimals < rows::S_mostDecimals)
            symbol.decimals = std::max(symbol.decimals, rows::DecimalsOf(value));
    }
    ++m_rows;
    if (waiting.times.size() == CacheContents::S_partRows) {
        Flush(a_symbol);
    } else if (m_rows >= S_waitingRows) {
        const auto longest = std::ranges::max_element(
            m_waiting, {}, [](const Waiting& a_waiting) { return a_waiting.times.size(); });
        Flush(static_cast<std::size_t>(longest - m_waiting.begin()));
    }
}

void PartWriter::Flush(std::size_t a_symbol)
{
    Waiting waiting = std::exchange(m_waiting[a_symbol], {});
    if (waiting.times.empty())
        return;
    m_rows -= waiting.times.size();
    DataSeriesSet::Columns columns;
    for (std::size_t column = 0; column < waiting.columns.size(); ++column)
        columns.emplace_back(m_contents.series[column], std::move(waiting.columns[column]));
    Write(a_symbol, {m_contents.interval.GetInterval(), m_contents.interval.GetMultiplicity(),
                     std::move(waiting.times), std::move(columns)});
}

void PartWriter::Write(std::size_t a_symbol, History a_rows)
{
    CacheContents::Symbol& symbol = m_contents.symbols[a_symbol];
    CacheContents::Part part;
    part.firstRow = symbol.rows;
    part.rows = a_rows.GetRecordsCount();
    a_rows.GetTimes(part.first, part.last);
    if (m_storesRows)
        Store(a_symbol, part, std::move(a_rows));
    symbol.rows += part.rows;
    symbol.parts.push_back(std::move(part));
}

void PartWriter::Store(std::size_t a_symbol, CacheContents::Part& a_part, History a_rows)
{
    std::ostringstream stream;
    a_rows.Write(stream);
    const std::string bytes = std::move(stream).str();
    a_part.bytes = bytes.size();
    a_part.checksum = Fingerprint::Of(bytes);
    const std::size_t place = m_contents.symbols[a_symbol].parts.size();
    std::error_code error;
    m_written =
        m_written && FileTools::ReplaceFile(m_files.PathOf(m_contents, a_symbol, place), bytes, error);
    if (m_written)
        return;
    a_part.kept = std::make_shared<const History>(std::move(a_rows));
    if (!m_failureTold.exchange(true))
        WriteLog(__LINE__, "Nie można zapisać historii w folderze " + m_files.GetFolder().string() + " (" +
                               CodePage::Cp1250ToUtf8(internal::ErrorText(error)) +
                               "); dane pozostają w pamięci");
}

} // namespace kalvento::files
