#include "kalvento/BlockFile.h"

#include "kalvento/OpenInput.h"
#include "kalvento/TextForms.h"
#include "text_rows/SourceStreambuf.h"

#include <fmt/ranges.h>

#include <fstream>
#include <istream>
#include <ostream>
#include <span>
#include <stdexcept>
#include <streambuf>
#include <string_view>

namespace kalvento::tool {

namespace {

constexpr std::string_view S_blockStart("\x01\0\0\0", 4);

/// Lets a stream write into a target.
class TargetBuffer final : public std::streambuf {
public:
    explicit TargetBuffer(OutputTarget& a_target) : m_target(a_target) {}

private:
    std::streamsize xsputn(const char* a_bytes, std::streamsize a_size) override
    {
        m_target.Write(std::string_view(a_bytes, static_cast<std::size_t>(a_size)));
        return a_size;
    }
    int_type overflow(int_type a_sign) override
    {
        const char sign = traits_type::to_char_type(a_sign);
        m_target.Write(std::string_view(&sign, 1));
        return a_sign;
    }

    OutputTarget& m_target;
};

std::string HexText(std::string_view a_bytes)
{
    return fmt::format("{:02x}", fmt::join(std::as_bytes(std::span(a_bytes)), " "));
}

} // namespace

std::uint64_t BlockFile::TimePlace(std::size_t a_row) const
{
    // Version and count of columns, then for each column its series, its count and its values; the count of times.
    std::uint64_t place = 4 + 8;
    for (const auto& [series, values] : set)
        place += 4 + 8 + values.size() * sizeof(double);
    return place + 8 + a_row * sizeof(NDateTime);
}

bool IsBlockFile(const std::string& a_path)
{
    std::string start(S_blockStart.size(), '\xFF');
    std::ifstream file(a_path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return a_path != "-" && file && start == S_blockStart;
}

BlockFile ReadBlockFile(const std::string& a_path, ToolContext& a_context)
{
    const auto source = OpenInput(a_path, a_context);
    SourceStreambuf bytes(*source);
    std::istream stream(&bytes);
    BlockFile block;
    block.name = source->GetName();

    const std::string_view start = bytes.Peek().substr(0, S_blockStart.size());
    if (start != S_blockStart)
        throw ToolError(EExitBadData, block.name + ": is no series block: found " +
                                          (start.empty() ? "an empty input" : "the bytes " + HexText(start)) +
                                          ", expected " + HexText(S_blockStart) +
                                          " (version 1) at its begin");
    try {
        block.set.Read(stream);
    } catch (const std::length_error&) {
        throw ToolError(EExitBadData, block.name +
                                          ": a damaged series block: it claims more rows or columns than any "
                                          "memory holds");
    }
    block.endsEarly = stream.fail();
    block.surplus = bytes.CountRest();
    block.size = bytes.GetCount();
    return block;
}

void WriteBlock(const DataSeriesSet& a_set, OutputTarget& a_target)
{
    TargetBuffer bytes(a_target);
    std::ostream stream(&bytes);
    // A full disk must show as what it is, not as a stream that went bad.
    stream.exceptions(std::ios::badbit);
    a_set.Write(stream);
}

std::optional<std::string> FindBadTime(const BlockFile& a_block)
{
    const auto& times = a_block.set.TimeSeries();
    for (std::size_t row = 0; row < times.size(); ++row) {
        const std::string place =
            "row " + std::to_string(row + 1) + " (byte " + std::to_string(a_block.TimePlace(row)) + "): ";
        if (!times[row].IsValid())
            return place + "the time is not valid";
        if (row > 0 && times[row] < times[row - 1])
            return place + ShownTimeWithCounter(times[row]) + " comes after " +
                   ShownTimeWithCounter(times[row - 1]);
    }
    return std::nullopt;
}

} // namespace kalvento::tool
