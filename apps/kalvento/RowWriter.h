#pragma once

#include "kalvento/OutputTarget.h"
#include "kalvento/ToolContext.h"
#include "text_rows/RowReader.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kalvento::tool {

/// The forms in which rows are written.
enum EOutputFormat : std::uint8_t {
    EOutputCsv, ///< `time,open,high,low,close,volume`, then the other series; a symbol column after the time.
    EOutputJsonl, ///< One JSON object per line.
    EOutputTable, ///< Aligned columns, for reading; held in memory until the end.
    EOutputBlock  ///< The binary form of DataSeriesSet; held in memory until the end, no symbols.
};

/// What a file of that form ends with, ".csv".
std::string_view OutputExtension(EOutputFormat a_format);

/// Raises ToolError (EExitUsage) for a file name that promises another form than that: "candles.parquet".
void RefuseOtherForm(const std::string& a_path, EOutputFormat a_format);

/// Writes rows in one form. Numbers are the shortest decimals that read back as the same double; times are
/// YYYY-MM-DD HH:MM:SS (T instead of the blank in JSON), with the fraction where RowBlock::fractions has one, without
/// the ordering counter. One thread at a time.
class RowWriter {
public:
    virtual ~RowWriter() = default;
    /// The next rows, of the shape given to Make. a_symbol: of all of them, where the writer was made for symbols.
    virtual void Write(const RowBlock& a_rows, std::string_view a_symbol) = 0;
    /// Writes what was held back. Once, at the end; its owner then commits the target.
    virtual void Finish() = 0;
    /// What the form couldn't hold; empty where it held all.
    virtual std::string_view GetNote() const { return {}; }

    /// a_target must outlive the writer. a_dateOnly: times of day aren't shown.
    static std::unique_ptr<RowWriter> Make(EOutputFormat a_format, const RowLayout& a_layout, bool a_dateOnly,
                                           OutputTarget& a_target);
};

} // namespace kalvento::tool
