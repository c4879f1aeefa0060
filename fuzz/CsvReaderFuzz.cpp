// Text rows from outside: any bytes end in rows or in a refusal, and rows never go back in time.
#include "folding/PieceFolder.h"
#include "text_rows/ByteSource.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>

using namespace kalvento::rows;

namespace {

class BytesSource final : public ByteSource {
public:
    BytesSource(std::string_view a_bytes, std::size_t a_piece)
        : ByteSource("input", 0), m_rest(a_bytes), m_piece(a_piece)
    {}
    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        const std::size_t count = std::min({a_size, m_piece, m_rest.size()});
        std::memcpy(a_bytes, m_rest.data(), count);
        m_rest.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_rest;
    std::size_t m_piece;
};

void Expect(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

// Three bytes choose among all options.
ReadOptions ChooseOptions(const std::uint8_t* a_choices)
{
    const unsigned form = a_choices[0];
    const unsigned more = a_choices[1];
    const unsigned signs = a_choices[2];
    ReadOptions options;
    options.order = static_cast<EOrderRule>(form % 4);
    options.sort = form % 5 == 0;
    options.dropRepeated = form % 7 == 0;
    options.fractions = form % 11 == 0;
    options.symbol = more % 13 == 0 ? "A" : "";
    options.badLines = (form & 4U) != 0 ? EBadLinesReject : EBadLinesStop;
    if ((form & 8U) != 0)
        options.symbolColumn = "symbol";
    if ((form & 16U) != 0) {
        options.zone = "Europe/Warsaw";
        options.outputZone = "America/New_York";
    }
    if ((form & 32U) != 0) {
        options.header = false;
        options.columns = {{"time", "1"}, {"price", "2"}};
    }
    options.findSymbols = (more & 1U) != 0;
    options.strict = (more & 2U) != 0;
    if ((more & 4U) != 0) {
        options.from = "2024-08-08";
        options.to = "2024-10-27";
    }
    options.inputInterval = (more & 8U) != 0 ? "1min" : "";
    options.stampedWithEnd = (more & 16U) != 0;
    options.growing = (more & 32U) != 0;
    if ((more & 64U) != 0)
        options.folds = {{"price", "ohlclast"}, {"volume", "last"}};
    if ((more & 128U) != 0)
        options.pricesFrom = {Bid1, Ask1};
    constexpr std::array<const char*, 6> formats = {"",       "%Y%m%d %H%M%S", "unix",
                                                    "unixms", "unixus",        "unixns"};
    options.timeFormat = (form & 64U) != 0 ? "%d.%m.%y %H:%M:%S.%f" : formats[signs % formats.size()];
    options.delimiter = "\0,;\t|"[signs / 6 % 5];
    options.decimal = "\0.,"[signs / 30 % 3];
    return options;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    constexpr std::size_t choices = 3;
    if (a_size < choices)
        return 0;
    BytesSource source(std::string_view(reinterpret_cast<const char*>(a_data) + choices, a_size - choices),
                       (a_data[0] & 128U) != 0 ? 5 : std::numeric_limits<std::size_t>::max());
    try {
        const ReadOptions options = ChooseOptions(a_data); // outlives the reader
        RowReader reader(source, options);
        RowBlock rows;
        RowBlock candles;
        const RowLayout& layout = reader.GetLayout();
        // Rows may be candles of many years.
        std::optional<PieceFolder> folder;
        if (!layout.hasSymbols && PieceFolder::Reaches(layout.interval, {EIntervalYear, 1}))
            folder.emplace(PropertiesOf(layout), layout.interval, IntervalAndMultiplicity(EIntervalYear, 1),
                           EWindowBegin);
        std::size_t kept = 0;
        while (reader.Read(rows, 7, kept)) {
            Expect(rows.rows > kept);
            for (std::size_t row = 1; row < rows.rows; ++row)
                Expect(reader.GetLayout().hasSymbols || !(rows.times[row] < rows.times[row - 1]));
            if (reader.GetLayout().hasSymbols) {
                for (std::size_t row = 0; row < rows.rows; ++row)
                    Expect(rows.symbols[row] < reader.GetSymbols().size());
            } else if (folder) {
                kept = folder->Fold(rows, false, candles);
            }
        }
    } catch (const RowsFault&) {
    } catch (const std::exception&) {
        // What the library refuses in a block: another version, a length that no vector can have.
        Expect(a_size > choices + 3 && std::memcmp(a_data + choices, "\x01\0\0\0", 4) == 0);
    }
    return 0;
}
