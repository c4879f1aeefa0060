#include "text_rows/RowReader.h"

#include "text_rows/BlockRows.h"
#include "text_rows/ByteSource.h"
#include "text_rows/LineBuffer.h"
#include "text_rows/LineReader.h"
#include "text_rows/RowOrder.h"
#include "text_rows/TextFields.h"
#include "text_rows/TextShape.h"

#include <optional>
#include <string_view>
#include <utility>

namespace kalvento::rows {

namespace {

RowOrder MakeOrder(const ReadOptions& a_options)
{
    if (const auto why = CheckTimeFormat(a_options.timeFormat); !why.empty())
        RefuseOption(EOptionTimeFormat,
                     Quote(a_options.timeFormat) + " " + std::string(why) +
                         "; accepted are %Y %y %m %d %H %M %S %f %z %%, or unix, unixms, unixus, "
                         "unixns");
    return RowOrder(a_options);
}

} // namespace

// A text goes from the lines through the reader and the order into rows; a block is a source of its own.
struct RowReader::Impl {
    Impl(ByteSource& a_source, const ReadOptions& a_options, ReadHooks a_hooks);

    bool ReadText(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep);
    bool Account(const RowOrder::Verdict& a_verdict, const char* a_line, std::uint32_t a_symbol);
    bool TakeRow(const WallTime& a_time, const char* a_line, std::size_t a_row, NDateTime& a_taken);
    void Refuse(const char* a_line, const RowsFault::Parts& a_fault);

    const ReadOptions& options;
    ReadHooks hooks;
    std::function<void(const LineFate&)> watcher;
    RowCounts counts;

    RowOrder order;
    LineBuffer lines;
    TextShape shape; // of a block: only its layout
    LineReader reader;
    std::optional<BlockRows> block;
};

RowReader::Impl::Impl(ByteSource& a_source, const ReadOptions& a_options, ReadHooks a_hooks)
    : options(a_options),
      hooks(std::move(a_hooks)),
      order(MakeOrder(a_options)),
      lines(a_source, a_options.growing),
      reader(shape, options.timeFormat)
{
    if (BlockRows::Recognise(lines.GetBytes())) {
        block.emplace(lines.GetBytes(), a_source);
        shape.layout = block->GetLayout();
        shape.layout.PlanFolds(options.folds, a_source.GetName());
        return;
    }
    shape = TextShape::Find(lines, options, hooks);
    order.SetStampShift(shape.stampShift);
}

// Puts a row in order. False where it is left out. Inline, since it is called for each row.
inline bool RowReader::Impl::TakeRow(const WallTime& a_time, const char* a_line, std::size_t a_row,
                                     NDateTime& a_taken)
{
    const std::uint32_t symbol = reader.GetSymbol(a_row);
    const RowOrder::Verdict verdict = order.Take(a_time, symbol, a_taken);
    return (verdict.fate == LineFate::EFateTaken && !watcher) || Account(verdict, a_line, symbol);
}

bool RowReader::Impl::ReadText(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    const std::size_t end = a_keep + a_limit;
    a_block.Reserve(end, shape.layout.series.size(), shape.layout.hasSymbols);
    reader.Aim(a_block);

    std::size_t row = a_keep;
    while (row < end && lines.HaveLine()) {
        const char* const text = lines.GetPlace();
        WallTime time;
        bool taken = false;
        const char* next = reader.ReadPlain(text, lines.GetEnd(), time, row);
        if (next != nullptr) {
            taken = TakeRow(time, text, row, a_block.times[row]);
        } else {
            const std::string_view whole = lines.LineAt(text);
            RowsFault::Parts fault;
            if (!whole.empty() && whole.front() != '#') {
                if (reader.ReadAny(whole, time, row, fault))
                    taken = TakeRow(time, text, row, a_block.times[row]);
                else
                    Refuse(text, fault);
            }
            next = LineBuffer::After(whole);
        }
        row += taken ? 1 : 0;
        lines.Advance(next);
    }
    a_block.rows = row;
    counts.rows += row - a_keep;
    return row > a_keep;
}

// Counts and reports what became of a row. False where it is left out.
bool RowReader::Impl::Account(const RowOrder::Verdict& a_verdict, const char* a_line, std::uint32_t a_symbol)
{
    switch (a_verdict.fate) {
    case LineFate::EFateTaken:
        break;
    case LineFate::EFateRaised:
        if (counts.raised++ == 0)
            counts.firstRaised = lines.GetLineNumber();
        break;
    case LineFate::EFateDropped:
        ++counts.dropped;
        break;
    case LineFate::EFateOutside:
        ++counts.outside;
        break;
    case LineFate::EFateBad:
        Refuse(a_line, order.GetFault());
        return false;
    }
    if (watcher)
        watcher({a_verdict.fate, lines.GetLineNumber(), a_symbol, order.Show(a_verdict.seconds), {}});
    return a_verdict.fate == LineFate::EFateTaken || a_verdict.fate == LineFate::EFateRaised;
}

void RowReader::Impl::Refuse(const char* a_line, const RowsFault::Parts& a_fault)
{
    if (options.badLines == EBadLinesStop)
        lines.Fail(a_fault);
    if (hooks.setAside) {
        if (counts.bad == 0 && !shape.header.empty())
            hooks.setAside(shape.header);
        hooks.setAside(lines.LineAt(a_line));
    }
    ++counts.bad;
    if (watcher)
        watcher({LineFate::EFateBad, lines.GetLineNumber(), 0, NDateTime(),
                 std::make_shared<RowsFault::Parts>(a_fault)});
}

RowReader::RowReader(ByteSource& a_source, const ReadOptions& a_options, ReadHooks a_hooks)
    : m_impl(std::make_unique<Impl>(a_source, a_options, std::move(a_hooks)))
{}

RowReader::~RowReader() = default;

void RowReader::ContinueFrom(const RowReader& a_before)
{
    m_impl->order.ContinueFrom(a_before.m_impl->order);
    m_impl->reader.ContinueFrom(a_before.m_impl->reader);
}

void RowReader::WatchLines(std::function<void(const LineFate&)> a_watcher)
{
    m_impl->watcher = std::move(a_watcher);
}

const RowLayout& RowReader::GetLayout() const
{
    return m_impl->shape.layout;
}

bool RowReader::Read(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    if (m_impl->block)
        return m_impl->block->Read(a_block, a_limit, a_keep, m_impl->order.GetFrom(), m_impl->order.GetTo(),
                                   m_impl->counts);
    return m_impl->ReadText(a_block, a_limit, a_keep);
}

const std::vector<std::string>& RowReader::GetSymbols() const
{
    return m_impl->reader.GetSymbols().GetSymbols();
}

const RowCounts& RowReader::GetCounts() const
{
    return m_impl->counts;
}

std::uint64_t RowReader::GetBytesRead() const
{
    return m_impl->lines.GetBytesRead();
}

} // namespace kalvento::rows
