#include "text_rows/RowSorter.h"

#include "text_rows/RowBlock.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <tuple>

namespace kalvento::rows {

namespace {

constexpr std::size_t S_headWords = sizeof(RowSorter::Head) / sizeof(std::uint64_t);
static_assert(sizeof(RowSorter::Head) == 32);
// So many runs are merged at once, each with a buffer of so many bytes.
constexpr std::size_t S_mostRuns = 256;
constexpr std::size_t S_bufferBytes = std::size_t{1} << 16U;

RowSorter::Head HeadOf(const std::uint64_t* a_record)
{
    RowSorter::Head head;
    std::memcpy(static_cast<void*>(&head), a_record, sizeof(head));
    return head;
}

bool ComesBefore(const std::uint64_t* a_left, const std::uint64_t* a_right)
{
    const RowSorter::Head left = HeadOf(a_left);
    const RowSorter::Head right = HeadOf(a_right);
    return std::tie(left.seconds, left.nanoseconds, left.place) <
           std::tie(right.seconds, right.nanoseconds, right.place);
}

} // namespace

/// Records of a sorted run of the file, one after the other.
class RowSorter::Run {
public:
    Run(const internal::TemporaryFile& a_file, std::uint64_t a_begin, std::uint64_t a_end,
        std::size_t a_width)
        : m_file(a_file), m_place(a_begin), m_end(a_end), m_width(a_width)
    {
        Load();
    }
    /// Null at the end.
    const Word* Get() const { return m_at < m_words.size() ? &m_words[m_at] : nullptr; }
    void Advance()
    {
        m_at += m_width;
        if (m_at == m_words.size())
            Load();
    }

private:
    void Load()
    {
        const std::size_t record = m_width * sizeof(Word);
        const std::size_t whole = std::max<std::size_t>(1, S_bufferBytes / record) * record;
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(whole, m_end - m_place));
        m_words.resize(size / sizeof(Word));
        m_at = 0;
        m_file.ReadAt(m_place, m_words.data(), size);
        m_place += size;
    }

    const internal::TemporaryFile& m_file;
    std::uint64_t m_place;
    std::uint64_t m_end;
    std::size_t m_width;
    std::vector<Word> m_words;
    std::size_t m_at = 0;
};

/// The records of several runs in order.
class RowSorter::Merger {
public:
    Merger(const internal::TemporaryFile& a_file, const std::vector<std::uint64_t>& a_starts,
           std::size_t a_width)
    {
        for (std::size_t run = 0; run < a_starts.size(); ++run) {
            const bool isLast = run + 1 == a_starts.size();
            m_runs.push_back(std::make_unique<Run>(a_file, a_starts[run],
                                                   isLast ? a_file.GetSize() : a_starts[run + 1], a_width));
        }
        std::make_heap(m_runs.begin(), m_runs.end(), IsLater);
    }
    /// The next record, valid until the next call; null at the end.
    const Word* Next()
    {
        if (m_isTaken) {
            m_runs.back()->Advance();
            if (m_runs.back()->Get() == nullptr)
                m_runs.pop_back();
            else
                std::push_heap(m_runs.begin(), m_runs.end(), IsLater);
        }
        m_isTaken = !m_runs.empty();
        if (!m_isTaken)
            return nullptr;
        std::pop_heap(m_runs.begin(), m_runs.end(), IsLater);
        return m_runs.back()->Get();
    }

private:
    static bool IsLater(const std::unique_ptr<Run>& a_left, const std::unique_ptr<Run>& a_right)
    {
        return ComesBefore(a_right->Get(), a_left->Get());
    }

    std::vector<std::unique_ptr<Run>> m_runs; // a heap, but for the last one where m_isTaken
    bool m_isTaken = false;
};

RowSorter::RowSorter(std::size_t a_columns, std::size_t a_mostBytes)
    : m_width(S_headWords + a_columns), m_most(std::max<std::size_t>(2, a_mostBytes / sizeof(Word) / m_width))
{}

RowSorter::~RowSorter() = default;

void RowSorter::Add(const Head& a_head, const RowBlock& a_block, std::size_t a_row)
{
    if (m_words.size() == m_most * m_width)
        Spill();
    const std::size_t begin = m_words.size();
    m_words.resize(begin + m_width);
    std::memcpy(&m_words[begin], &a_head, sizeof(a_head));
    for (std::size_t column = 0; column + S_headWords < m_width; ++column)
        std::memcpy(&m_words[begin + S_headWords + column], &a_block.columns[column][a_row], sizeof(Word));
}

void RowSorter::Sort()
{
    m_order.resize(m_words.size() / m_width);
    std::iota(m_order.begin(), m_order.end(), 0U);
    std::sort(m_order.begin(), m_order.end(), [this](std::uint32_t a_left, std::uint32_t a_right) {
        return ComesBefore(&m_words[a_left * m_width], &m_words[a_right * m_width]);
    });
    m_taken = 0;
}

// Writes what is in memory to the end of the file, as one sorted run.
void RowSorter::Spill()
{
    if (m_words.empty())
        return;
    if (!m_file)
        m_file = std::make_unique<internal::TemporaryFile>();
    Sort();
    m_starts.push_back(m_file->GetSize());
    std::vector<Word> piece;
    for (const std::uint32_t record : m_order) {
        const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(record * m_width);
        piece.insert(piece.end(), begin, begin + static_cast<std::ptrdiff_t>(m_width));
        if (piece.size() * sizeof(Word) >= S_bufferBytes || record == m_order.back()) {
            m_file->Append(piece.data(), piece.size() * sizeof(Word));
            piece.clear();
        }
    }
    m_words.clear();
    m_order.clear();
    if (m_starts.size() == S_mostRuns)
        MergeRuns();
}

void RowSorter::MergeRuns()
{
    auto merged = std::make_unique<internal::TemporaryFile>();
    Merger merger(*m_file, m_starts, m_width);
    std::vector<Word> piece;
    while (const Word* const record = merger.Next()) {
        piece.insert(piece.end(), record, record + m_width);
        if (piece.size() * sizeof(Word) >= S_bufferBytes) {
            merged->Append(piece.data(), piece.size() * sizeof(Word));
            piece.clear();
        }
    }
    merged->Append(piece.data(), piece.size() * sizeof(Word));
    m_file = std::move(merged);
    m_starts = {0};
}

const RowSorter::Word* RowSorter::NextRecord()
{
    if (m_file && !m_merger) {
        Spill();
        std::vector<Word>().swap(m_words);
        m_merger = std::make_unique<Merger>(*m_file, m_starts, m_width);
    }
    if (m_merger)
        return m_merger->Next();
    if (m_order.empty() && !m_words.empty())
        Sort();
    return m_taken < m_order.size() ? &m_words[m_order[m_taken++] * m_width] : nullptr;
}

bool RowSorter::Next(Head& a_head, RowBlock& a_block, std::size_t a_row)
{
    const Word* const record = NextRecord();
    if (record == nullptr)
        return false;
    a_head = HeadOf(record);
    for (std::size_t column = 0; column + S_headWords < m_width; ++column)
        std::memcpy(&a_block.columns[column][a_row], record + S_headWords + column, sizeof(Word));
    return true;
}

} // namespace kalvento::rows
