#include "kalvento/RowWriter.h"

#include "kalvento/BlockFile.h"
#include "kalvento/TextForms.h"
#include "series/Series.h"
#include "text_rows/SeriesNames.h"
#include "text_rows/TimeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

constexpr std::size_t S_flushSize = std::size_t{1} << 18U;

/// A column of the output: where its values are, and its name.
struct OutputColumn {
    std::size_t place;
    std::string name;
};

std::vector<OutputColumn> OrderColumns(const RowLayout& a_layout)
{
    std::vector<OutputColumn> columns;
    for (const std::size_t place : VeloTools::Series::ReadingOrder(a_layout.series))
        columns.push_back({place, ColumnName(a_layout.series[place], !a_layout.interval.IsSingleTick())});
    return columns;
}

class LineWriter : public RowWriter {
public:
    LineWriter(const RowLayout& a_layout, bool a_dateOnly, OutputTarget& a_target)
        : m_columns(OrderColumns(a_layout)),
          m_symbols(a_layout.hasSymbols),
          m_dateOnly(a_dateOnly),
          m_fractionDigits(a_layout.fractionDigits),
          m_target(a_target)
    {}
    void Finish() override { Flush(); }

protected:
    void Flush()
    {
        m_target.Write(m_text);
        m_text.clear();
    }
    void AppendRowTime(std::string& a_text, const RowBlock& a_rows, std::size_t a_row, char a_between) const
    {
        AppendTime(a_text, a_rows.times[a_row], m_dateOnly, a_between);
        if (m_dateOnly || a_row >= a_rows.fractions.size())
            return;
        const std::int32_t nanoseconds = a_rows.fractions[a_row];
        const unsigned int digits = std::max(m_fractionDigits, FractionDigits(nanoseconds));
        if (digits > 0)
            a_text += fmt::format(".{:09}", nanoseconds).substr(0, 1 + digits);
    }
    void FlushIfMuch()
    {
        if (m_text.size() > S_flushSize)
            Flush();
    }

    std::vector<OutputColumn> m_columns;
    bool m_symbols;
    bool m_dateOnly;
    unsigned int m_fractionDigits; // at least
    std::string m_text;

private:
    OutputTarget& m_target;
};

class CsvWriter final : public LineWriter {
public:
    CsvWriter(const RowLayout& a_layout, bool a_dateOnly, OutputTarget& a_target)
        : LineWriter(a_layout, a_dateOnly, a_target)
    {
        m_text = m_symbols ? "time,symbol" : "time";
        for (const OutputColumn& column : m_columns)
            m_text += "," + column.name;
        m_text += '\n';
    }

    void Write(const RowBlock& a_rows, std::string_view a_symbol) override
    {
        const std::string symbol = m_symbols ? "," + QuoteField(a_symbol) : "";
        for (std::size_t row = 0; row < a_rows.rows; ++row) {
            AppendRowTime(m_text, a_rows, row, ' ');
            m_text += symbol;
            for (const OutputColumn& column : m_columns) {
                m_text += ',';
                AppendNumber(m_text, a_rows.columns[column.place][row]);
            }
            m_text += '\n';
            FlushIfMuch();
        }
    }
};

class JsonWriter final : public LineWriter {
public:
    using LineWriter::LineWriter;

    void Write(const RowBlock& a_rows, std::string_view a_symbol) override
    {
        const std::string symbol = m_symbols ? ",\"symbol\":" + JsonText(a_symbol) : "";
        for (std::size_t row = 0; row < a_rows.rows; ++row) {
            m_text += "{\"time\":\"";
            AppendRowTime(m_text, a_rows, row, 'T');
            m_text += '"';
            m_text += symbol;
            for (const OutputColumn& column : m_columns) {
                m_text += ",\"" + column.name + "\":";
                const double value = a_rows.columns[column.place][row];
                // JSON has no word for what isn't finite; a sum can overflow.
                if (std::isfinite(value))
                    AppendNumber(m_text, value);
                else
                    m_text += "null";
            }
            m_text += "}\n";
            FlushIfMuch();
        }
    }
};

class TableWriter final : public LineWriter {
public:
    TableWriter(const RowLayout& a_layout, bool a_dateOnly, OutputTarget& a_target)
        : LineWriter(a_layout, a_dateOnly, a_target), m_table(MakeTable())
    {}

    void Write(const RowBlock& a_rows, std::string_view a_symbol) override
    {
        for (std::size_t row = 0; row < a_rows.rows; ++row) {
            std::string time;
            AppendRowTime(time, a_rows, row, ' ');
            std::vector<std::string> cells = {std::move(time)};
            if (m_symbols)
                cells.emplace_back(a_symbol);
            for (const OutputColumn& column : m_columns)
                cells.push_back(ShownNumber(a_rows.columns[column.place][row]));
            m_table.Add(std::move(cells));
        }
    }

    void Finish() override
    {
        m_text = m_table.ToText();
        Flush();
    }

private:
    TextTable MakeTable() const
    {
        std::vector<std::string> heads = {"time"};
        if (m_symbols)
            heads.emplace_back("symbol");
        std::vector<TextTable::EColumn> kinds(heads.size(), TextTable::EColumnText);
        for (const OutputColumn& column : m_columns) {
            heads.push_back(column.name);
            kinds.push_back(TextTable::EColumnValue);
        }
        return {std::move(heads), std::move(kinds)};
    }

    TextTable m_table;
};

class BlockWriter final : public RowWriter {
public:
    BlockWriter(const RowLayout& a_layout, OutputTarget& a_target) : m_layout(a_layout), m_target(a_target)
    {
        for (const ESeriesId series : a_layout.series)
            m_columns.emplace_back(series, std::vector<double>());
    }

    void Write(const RowBlock& a_rows, std::string_view /*a_symbol*/) override
    {
        const auto count = static_cast<std::ptrdiff_t>(a_rows.rows);
        if (count == 0)
            return; // such a block may lack its columns
        const auto fractions =
            std::span(a_rows.fractions).first(std::min(a_rows.rows, a_rows.fractions.size()));
        m_cutsFractions =
            m_cutsFractions || std::ranges::any_of(fractions, [](auto a_each) { return a_each != 0; });
        m_times.insert(m_times.end(), a_rows.times.begin(), a_rows.times.begin() + count);
        for (std::size_t place = 0; place < m_columns.size(); ++place) {
            const std::vector<double>& values = a_rows.columns[place];
            m_columns[place].second.insert(m_columns[place].second.end(), values.begin(),
                                           values.begin() + count);
        }
    }

    void Finish() override
    {
        const DataSeriesSet set(m_layout.interval.GetInterval(), m_layout.interval.GetMultiplicity(),
                                std::move(m_times), std::move(m_columns));
        WriteBlock(set, m_target);
    }

    std::string_view GetNote() const override
    {
        return m_cutsFractions
                   ? "a series block holds whole seconds; fractions only say which row comes first"
                   : "";
    }

private:
    RowLayout m_layout;
    OutputTarget& m_target;
    std::vector<NDateTime> m_times;
    DataSeriesSet::Columns m_columns;
    bool m_cutsFractions = false;
};

/// What the end of a file's name promises, in small letters; the forms that we write among them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 27> S_promises = {
    {{".csv", "csv"},       {".jsonl", "jsonl"}, {".ndjson", "jsonl"},     {".block", "block"},
     {".json", "JSON"},     {".tsv", "tabs"},    {".parquet", "Parquet"},  {".xlsx", "Excel"},
     {".xls", "Excel"},     {".xlsm", "Excel"},  {".ods", "OpenDocument"}, {".feather", "Feather"},
     {".arrow", "Arrow"},   {".orc", "ORC"},     {".avro", "Avro"},        {".h5", "HDF5"},
     {".hdf5", "HDF5"},     {".pkl", "pickle"},  {".npy", "numpy"},        {".npz", "numpy"},
     {".sqlite", "SQLite"}, {".db", "SQLite"},   {".xml", "XML"},          {".html", "HTML"},
     {".gz", "gzip"},       {".zst", "zstd"},    {".zip", "zip"}}};

} // namespace

void RefuseOtherForm(const std::string& a_path, EOutputFormat a_format)
{
    std::string end = std::filesystem::path(a_path).extension().string();
    std::ranges::transform(end, end.begin(), [](char a_sign) {
        return a_sign >= 'A' && a_sign <= 'Z' ? static_cast<char>(a_sign - 'A' + 'a') : a_sign;
    });
    const auto* const found =
        std::ranges::find(S_promises, end, &std::pair<std::string_view, std::string_view>::first);
    const std::string_view written = a_format == EOutputTable ? "table" : OutputExtension(a_format).substr(1);
    if (found == S_promises.end() || found->second == written)
        return;
    const bool isOurs = found->second == "csv" || found->second == "jsonl" || found->second == "block";
    throw ToolError(EExitUsage, "--output: the name " + a_path + " promises " + std::string(found->second) +
                                    ", the form is " + std::string(written) +
                                    (isOurs ? "; expected --format " + std::string(found->second)
                                            : "; expected a name such as candles" +
                                                  std::string(OutputExtension(a_format))) +
                                    " or another name");
}

std::string_view OutputExtension(EOutputFormat a_format)
{
    switch (a_format) {
    case EOutputJsonl:
        return ".jsonl";
    case EOutputTable:
        return ".txt";
    case EOutputBlock:
        return ".block";
    default:
        return ".csv";
    }
}

std::unique_ptr<RowWriter> RowWriter::Make(EOutputFormat a_format, const RowLayout& a_layout, bool a_dateOnly,
                                           OutputTarget& a_target)
{
    switch (a_format) {
    case EOutputJsonl:
        return std::make_unique<JsonWriter>(a_layout, a_dateOnly, a_target);
    case EOutputTable:
        return std::make_unique<TableWriter>(a_layout, a_dateOnly, a_target);
    case EOutputBlock:
        return std::make_unique<BlockWriter>(a_layout, a_target);
    default:
        return std::make_unique<CsvWriter>(a_layout, a_dateOnly, a_target);
    }
}

} // namespace kalvento::tool
