// Text rows from outside: any bytes end in rows or in a refusal, and rows never go back in time.
#include "folding/PieceFolder.h"
#include "text_rows/ByteSource.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    if (a_size < 1)
        return 0;
    // The first byte chooses among the options.
    const unsigned choice = a_data[0];
    ReadOptions options;
    options.order = static_cast<EOrderRule>(choice % 3);
    options.badLines = (choice & 4U) != 0 ? EBadLinesReject : EBadLinesStop;
    if ((choice & 8U) != 0)
        options.symbolColumn = "symbol";
    if ((choice & 16U) != 0) {
        options.zone = "Europe/Warsaw";
        options.outputZone = "America/New_York";
    }
    if ((choice & 32U) != 0) {
        options.header = false;
        options.columns = {{"time", "1"}, {"price", "2"}};
    }
    if ((choice & 64U) != 0)
        options.timeFormat = "%d.%m.%y %H:%M:%S.%f";

    BytesSource source(std::string_view(reinterpret_cast<const char*>(a_data) + 1, a_size - 1),
                       (choice & 128U) != 0 ? 5 : std::numeric_limits<std::size_t>::max());
    try {
        RowReader reader(source, options);
        RowBlock rows;
        RowBlock candles;
        const RowLayout& layout = reader.GetLayout();
        PieceFolder folder(PropertiesOf(layout), layout.interval, {EIntervalYear, 1}, EWindowBegin);
        std::size_t kept = 0;
        while (reader.Read(rows, 7, kept)) {
            Expect(rows.rows > kept);
            for (std::size_t row = 1; row < rows.rows; ++row)
                Expect(reader.GetLayout().hasSymbols || !(rows.times[row] < rows.times[row - 1]));
            if (reader.GetLayout().hasSymbols) {
                for (std::size_t row = 0; row < rows.rows; ++row)
                    Expect(rows.symbols[row] < reader.GetSymbols().size());
            } else {
                kept = folder.Fold(rows, false, candles);
            }
        }
    } catch (const RowsFault&) {
    } catch (const std::exception&) {
        // What the library refuses in a block: another version, a length that no vector can have.
        Expect(a_size > 4 && std::memcmp(a_data + 1, "\x01\0\0\0", 4) == 0);
    }
    return 0;
}
