#include "text_rows/RowReader.h"

#include "text_rows/BlockRows.h"
#include "text_rows/ByteSource.h"
#include "text_rows/LineBuffer.h"
#include "text_rows/LineReader.h"
#include "text_rows/RepeatFinder.h"
#include "text_rows/RowOrder.h"
#include "text_rows/RowSorter.h"
#include "text_rows/TextFields.h"
#include "text_rows/TextShape.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string_view>
#include <tuple>
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
    bool ReadSorted(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep);
    void Collect();
    void PlanSorting();

    const ReadOptions& options;
    ReadHooks hooks;
    std::function<void(const LineFate&)> watcher;
    RowCounts counts;

    RowOrder order;
    LineBuffer lines;
    TextShape shape; // of a block: only its layout
    LineReader reader;
    std::optional<BlockRows> block;
    // Of rows that are sorted: those collected so far, and where among all inputs this one's rows stand.
    std::unique_ptr<RowSorter> sorter;
    std::int64_t firstPlace = 0;
    bool isCollected = false;

private:
    template<class Taker>
    bool ReadLine(std::size_t a_row, const Taker& a_take);
    bool IsWanted(std::uint32_t a_symbol) const;
    std::uint32_t SymbolOf(std::size_t a_row) const;
    bool TakeRow(const WallTime& a_time, RowBlock& a_block, std::size_t a_row);
    bool Account(const RowOrder::Verdict& a_verdict, std::uint64_t a_line, std::uint32_t a_symbol);
    void MakeRoom(RowBlock& a_block, std::size_t a_rows) const;
    bool Repeats(const RowBlock& a_block, std::size_t a_row);
    bool KeepsRepeated(const RowBlock& a_block, std::size_t a_row, std::uint32_t a_symbol,
                       std::int64_t a_seconds, std::int32_t a_nanoseconds);
    void KeepRow(const WallTime& a_time, const RowBlock& a_block);
    void CountMisplaced(const RowSorter::Head& a_head);
    void JudgeOrder(std::uint64_t a_astray, std::uint64_t a_rows, const char* a_found) const;
    void Refuse(std::string_view a_text, const RowsFault::Parts& a_fault);

    std::size_t GetColumns() const { return shape.layout.series.size(); }

    RepeatFinder repeats;
    std::vector<double> lastRow; // of the piece before
    std::size_t firstRow = 0;    // of this piece in its block
    std::vector<RowSorter::Head>
        lastPlaced; // by symbol: the latest row so far, or the earliest of those to be turned
    std::uint64_t collected = 0;
};

RowReader::Impl::Impl(ByteSource& a_source, const ReadOptions& a_options, ReadHooks a_hooks)
    : options(a_options),
      hooks(std::move(a_hooks)),
      order(MakeOrder(a_options)),
      lines(a_source, a_options.growing),
      reader(shape, options.timeFormat)
{
    if (BlockRows::Recognise(lines.GetBytes())) {
        if (!options.symbol.empty())
            RefuseOption(EOptionSymbol,
                         a_source.GetName() + " is a series block, which holds one instrument");
        block.emplace(lines.GetBytes(), a_source);
        shape.layout = block->GetLayout();
        shape.layout.PlanFolds(options.folds, a_source.GetName());
        return;
    }
    shape = TextShape::Find(lines, options, hooks);
    order.SetStampShift(shape.stampShift);
    PlanSorting();
}

void RowReader::Impl::PlanSorting()
{
    const bool turns = shape.newestFirst && options.turn && options.order != EOrderRefuse;
    if (shape.newestFirst && !options.turn && options.order == EOrderRaiseFew)
        lines.Fail({.help = EOptionOrder,
                    .found = "the rows run from the newest to the oldest",
                    .expected = "the oldest first, as rows come live"});
    if (turns && hooks.turned)
        hooks.turned();
    if (turns || options.sort)
        sorter = std::make_unique<RowSorter>(GetColumns());
}

// Where one instrument is taken out of several, or must be the only one.
bool RowReader::Impl::IsWanted(std::uint32_t a_symbol) const
{
    const std::vector<std::string>& symbols = reader.GetSymbols().GetSymbols();
    if (!options.symbol.empty())
        return symbols[a_symbol] == options.symbol;
    if (a_symbol > 0)
        lines.Fail({.help = EOptionSymbol,
                    .found = "found the symbol " + Quote(symbols[a_symbol]) + " after " + Quote(symbols[0]),
                    .expected = "rows of one instrument"});
    return true;
}

inline std::uint32_t RowReader::Impl::SymbolOf(std::size_t a_row) const
{
    return shape.layout.hasSymbols ? reader.GetSymbol(a_row) : 0;
}

// Reads the line at hand into that row and hands it on; goes on to the next line. What a_take answers; false where
// there was nothing to take.
template<class Taker>
bool RowReader::Impl::ReadLine(std::size_t a_row, const Taker& a_take)
{
    const char* const text = lines.GetPlace();
    WallTime time;
    bool isRead = true;
    const char* next = reader.ReadPlain(text, lines.GetEnd(), time, a_row);
    if (next == nullptr) {
        const std::string_view whole = lines.LineAt(text);
        next = LineBuffer::After(whole);
        RowsFault::Parts fault;
        isRead = !whole.empty() && whole.front() != '#';
        if (isRead && !reader.ReadAny(whole, time, a_row, fault)) {
            Refuse(whole, fault);
            isRead = false;
        }
    }
    if (isRead && shape.hasSymbolColumn && !shape.layout.hasSymbols)
        isRead = IsWanted(reader.GetSymbol(a_row));
    const bool taken = isRead && a_take(time);
    lines.Advance(next);
    return taken;
}

// Whether the row has the values of the one before it.
bool RowReader::Impl::Repeats(const RowBlock& a_block, std::size_t a_row)
{
    if (a_row == firstRow && lastRow.empty())
        return false;
    for (std::size_t column = 0; column < GetColumns(); ++column) {
        const std::vector<double>& values = a_block.columns[column];
        const double before = a_row > firstRow ? values[a_row - 1] : lastRow[column];
        if (std::bit_cast<std::uint64_t>(values[a_row]) != std::bit_cast<std::uint64_t>(before))
            return false;
    }
    return true;
}

// Counts a row that repeats another one of its time. False where it is left out for that.
bool RowReader::Impl::KeepsRepeated(const RowBlock& a_block, std::size_t a_row, std::uint32_t a_symbol,
                                    std::int64_t a_seconds, std::int32_t a_nanoseconds)
{
    if (!repeats.IsRepeat(a_symbol, a_seconds, a_nanoseconds, a_block, a_row, GetColumns()))
        return true;
    ++counts.repeated;
    return !options.dropRepeated;
}

// Puts a row in order. False where it is left out. Inline, since it is called for each row.
inline bool RowReader::Impl::TakeRow(const WallTime& a_time, RowBlock& a_block, std::size_t a_row)
{
    const std::uint32_t symbol = SymbolOf(a_row);
    RowOrder::Verdict verdict = order.Place(a_time);
    if (verdict.fate == LineFate::EFateTaken) {
        if (options.dropRepeated &&
            !KeepsRepeated(a_block, a_row, symbol, verdict.seconds, a_time.nanoseconds))
            return false;
        verdict = order.Rank(verdict.seconds, a_time.nanoseconds, symbol, a_block.times[a_row]);
        if (options.fractions)
            a_block.fractions[a_row] = verdict.nanoseconds;
        if (verdict.repeatsTime && !options.dropRepeated && Repeats(a_block, a_row) &&
            (!shape.layout.hasSymbols || a_row == firstRow || a_block.symbols[a_row - 1] == symbol))
            ++counts.repeated;
    }
    return (verdict.fate == LineFate::EFateTaken && !watcher) ||
           Account(verdict, lines.GetLineNumber(), symbol);
}

void RowReader::Impl::MakeRoom(RowBlock& a_block, std::size_t a_rows) const
{
    a_block.Reserve(a_rows, GetColumns(), shape.hasSymbolColumn);
    if (options.fractions && a_block.fractions.size() < a_rows)
        a_block.fractions.resize(a_rows);
}

bool RowReader::Impl::ReadText(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    const std::size_t end = a_keep + a_limit;
    MakeRoom(a_block, end);
    reader.Aim(a_block);
    firstRow = a_keep;
    std::size_t row = a_keep;
    while (row < end && lines.HaveLine())
        row += ReadLine(row, [&](const WallTime& a_time) { return TakeRow(a_time, a_block, row); }) ? 1 : 0;
    a_block.rows = row;
    counts.rows += row - a_keep;
    if (row == a_keep) {
        JudgeOrder(counts.raised, counts.rows, "are earlier than a row before them");
        return false;
    }
    lastRow.clear();
    for (std::size_t column = 0; column < GetColumns(); ++column)
        lastRow.push_back(a_block.columns[column][row - 1]);
    return true;
}

// Rows that would lie in wrong candles are few, or the input isn't in the order that it seems to have.
void RowReader::Impl::JudgeOrder(std::uint64_t a_astray, std::uint64_t a_rows, const char* a_found) const
{
    constexpr std::uint64_t few = 3;
    if (options.order != EOrderRaiseFew || options.sort || a_astray <= few || a_astray * 1000 <= a_rows)
        return;
    throw RowsFault({.help = EOptionSort,
                     .found = std::to_string(a_astray) + " of " + std::to_string(a_rows) + " rows " +
                              a_found + ", this one first",
                     .expected = "rising times",
                     .file = lines.GetSource().GetName(),
                     .line = sorter ? counts.firstMisplaced : counts.firstRaised});
}

// Takes in all rows that there are to be sorted.
void RowReader::Impl::Collect()
{
    RowBlock row;
    row.Reserve(1, GetColumns(), shape.hasSymbolColumn);
    reader.Aim(row);
    while (lines.HaveLine())
        ReadLine(0, [&](const WallTime& a_time) {
            KeepRow(a_time, row);
            return true;
        });
    isCollected = true;
    if (shape.newestFirst)
        JudgeOrder(
            counts.misplaced, collected,
            "are later than a row before them, while the first rows run from the newest to the oldest");
}

void RowReader::Impl::KeepRow(const WallTime& a_time, const RowBlock& a_block)
{
    const std::uint32_t symbol = SymbolOf(0);
    const RowOrder::Verdict placed = order.Place(a_time);
    const std::uint64_t line = lines.GetLineNumber();
    if (placed.fate != LineFate::EFateTaken) {
        Account(placed, line, symbol);
        return;
    }
    // Of rows of one time, the one that is older stands later in an input that is to be turned.
    constexpr std::int64_t linesOfInput = std::int64_t{1} << 40U;
    const auto place = static_cast<std::int64_t>(line);
    const RowSorter::Head head{placed.seconds, a_time.nanoseconds, symbol,
                               firstPlace + (shape.newestFirst ? linesOfInput - place : place), line};
    CountMisplaced(head);
    sorter->Add(head, a_block, 0);
    ++collected;
}

void RowReader::Impl::CountMisplaced(const RowSorter::Head& a_head)
{
    const auto isEarlier = [](const RowSorter::Head& a_left, const RowSorter::Head& a_right) {
        return std::tie(a_left.seconds, a_left.nanoseconds) < std::tie(a_right.seconds, a_right.nanoseconds);
    };
    for (std::size_t symbol = lastPlaced.size(); symbol <= a_head.symbol; ++symbol)
        lastPlaced.push_back(a_head);
    RowSorter::Head& last = lastPlaced[a_head.symbol];
    if (shape.newestFirst ? isEarlier(last, a_head) : isEarlier(a_head, last)) {
        if (counts.misplaced++ == 0)
            counts.firstMisplaced = a_head.line;
    } else {
        last = a_head;
    }
}

bool RowReader::Impl::ReadSorted(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    if (!isCollected)
        Collect();
    const std::size_t end = a_keep + a_limit;
    MakeRoom(a_block, end);
    std::size_t row = a_keep;
    RowSorter::Head head;
    while (row < end && sorter->Next(head, a_block, row)) {
        if (shape.hasSymbolColumn)
            a_block.symbols[row] = head.symbol;
        if (!KeepsRepeated(a_block, row, head.symbol, head.seconds, head.nanoseconds))
            continue;
        const RowOrder::Verdict verdict =
            order.Rank(head.seconds, head.nanoseconds, head.symbol, a_block.times[row]);
        if (options.fractions)
            a_block.fractions[row] = verdict.nanoseconds;
        if (verdict.fate == LineFate::EFateBad) {
            RowsFault::Parts fault = order.GetFault();
            fault.file = lines.GetSource().GetName();
            fault.line = head.line;
            throw RowsFault(std::move(fault));
        }
        row += Account(verdict, head.line, head.symbol) ? 1 : 0;
    }
    a_block.rows = row;
    counts.rows += row - a_keep;
    return row > a_keep;
}

// Counts and reports what became of a row. False where it is left out.
bool RowReader::Impl::Account(const RowOrder::Verdict& a_verdict, std::uint64_t a_line,
                              std::uint32_t a_symbol)
{
    switch (a_verdict.fate) {
    case LineFate::EFateTaken:
        break;
    case LineFate::EFateRaised:
        if (counts.raised++ == 0)
            counts.firstRaised = a_line;
        break;
    case LineFate::EFateDropped:
        ++counts.dropped;
        break;
    case LineFate::EFateOutside:
        ++counts.outside;
        break;
    case LineFate::EFateBad:
        Refuse(lines.LineAt(lines.GetPlace()), order.GetFault());
        return false;
    }
    if (watcher)
        watcher({a_verdict.fate, a_line, a_symbol, order.Show(a_verdict.seconds), {}});
    return a_verdict.fate == LineFate::EFateTaken || a_verdict.fate == LineFate::EFateRaised;
}

void RowReader::Impl::Refuse(std::string_view a_text, const RowsFault::Parts& a_fault)
{
    if (options.badLines == EBadLinesStop)
        lines.Fail(a_fault);
    if (hooks.setAside) {
        if (counts.bad == 0 && !shape.header.empty())
            hooks.setAside(shape.header);
        hooks.setAside(a_text);
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

void RowReader::ContinueFrom(RowReader& a_before)
{
    m_impl->order.ContinueFrom(a_before.m_impl->order);
    m_impl->reader.ContinueFrom(a_before.m_impl->reader);
    if (!m_impl->options.sort)
        return;
    RefuseToSort();
    constexpr std::int64_t placesOfInput = std::int64_t{1} << 41U;
    m_impl->firstPlace = a_before.m_impl->firstPlace + placesOfInput;
    m_impl->sorter = std::move(a_before.m_impl->sorter);
}

// Rows of a block are in order, and don't go among those of texts.
void RowReader::RefuseToSort() const
{
    if (m_impl->block)
        RefuseOption(EOptionSort, m_impl->lines.GetSource().GetName() +
                                      " is a series block; only texts are sorted together");
}

void RowReader::Collect()
{
    RefuseToSort();
    m_impl->Collect();
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
    if (m_impl->block) {
        a_block.fractions.clear();
        return m_impl->block->Read(a_block, a_limit, a_keep, m_impl->order.GetFrom(), m_impl->order.GetTo(),
                                   m_impl->counts);
    }
    if (m_impl->sorter && m_impl->ReadSorted(a_block, a_limit, a_keep))
        return true;
    m_impl->sorter.reset(); // what a growing source has further comes as it comes
    return m_impl->ReadText(a_block, a_limit, a_keep);
}

void RowReader::ExpectSymbol() const
{
    const std::string& wanted = m_impl->options.symbol;
    const std::vector<std::string>& symbols = GetSymbols();
    if (wanted.empty() || std::ranges::find(symbols, wanted) != symbols.end())
        return;
    constexpr std::size_t shown = 20;
    std::string names;
    for (std::size_t place = 0; place < std::min(symbols.size(), shown); ++place)
        names += (place > 0 ? ", " : "") + symbols[place];
    RefuseOption(EOptionSymbol, "found " + Quote(wanted),
                 "one of " + names + (symbols.size() > shown ? ", ..." : ""));
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
