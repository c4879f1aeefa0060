#include "text_rows/LineBuffer.h"

#include "text_rows/ByteSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kalvento::rows {

namespace {

constexpr std::size_t S_readSize = std::size_t{1} << 18U;
constexpr std::size_t S_longestLine = std::size_t{1} << 24U;

} // namespace

LineBuffer::LineBuffer(ByteSource& a_source, bool a_growing) : m_source(a_source), m_growing(a_growing)
{
    Fill();
}

void LineBuffer::Fill()
{
    std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin),
              m_buffer.begin() + static_cast<std::ptrdiff_t>(m_filled), m_buffer.begin());
    m_filled -= m_begin;
    m_begin = 0;
    m_lineEnd = 0;
    // The first piece is a full one, so that what the first rows show doesn't depend on how a pipe hands them over.
    const bool isFirst = m_bytesRead == 0 && !m_growing;
    while (!m_atEnd && (m_lineEnd == 0 || (isFirst && m_filled < S_readSize))) {
        if (m_filled > S_longestLine)
            Fail({.found = "the line is longer than 16 MB",
                  .expected = "lines of text or a binary series block"});
        if (m_buffer.size() < m_filled + S_readSize + S_padding)
            m_buffer.resize(m_filled + S_readSize + S_padding);
        const std::size_t count = m_source.Read(m_buffer.data() + m_filled, S_readSize);
        m_bytesRead += count;
        if (count == 0 && m_growing)
            return;
        if (count == 0) {
            m_atEnd = true;
            // The last line may lack its line feed.
            if (m_filled > 0 && m_buffer[m_filled - 1] != '\n')
                m_buffer[m_filled++] = '\n';
            m_lineEnd = m_filled;
            return;
        }
        const auto* found = static_cast<const char*>(memrchr(m_buffer.data() + m_filled, '\n', count));
        m_filled += count;
        if (found != nullptr)
            m_lineEnd = static_cast<std::size_t>(found - m_buffer.data()) + 1;
    }
}

std::string_view LineBuffer::LineAt(const char* a_begin) const
{
    const char* end =
        static_cast<const char*>(std::memchr(a_begin, '\n', static_cast<std::size_t>(GetEnd() - a_begin)));
    std::string_view text(a_begin, static_cast<std::size_t>(end - a_begin));
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

void LineBuffer::Fail(RowsFault::Parts a_fault) const
{
    a_fault.file = m_source.GetName();
    a_fault.line = m_line;
    throw RowsFault(std::move(a_fault));
}

} // namespace kalvento::rows
