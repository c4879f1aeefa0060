#pragma once

#include "text_rows/RowsFault.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kalvento::rows {

class ByteSource;

/// The lines of a text, in a buffer that doesn't grow with the text. Places in it hold until the next HaveLine.
class LineBuffer {
public:
    /// This many bytes past the last one can be loaded, so that a fast reader needs no test for the end.
    static constexpr std::size_t S_padding = 64;

    /// Reads the first bytes. a_source outlives the buffer. a_growing: the last line waits for its line feed, and no
    /// end is final. Raises RowsFault for a line of more than 16 MB.
    LineBuffer(ByteSource& a_source, bool a_growing);

    /// Whether a whole line lies at GetPlace; reads on if need be.
    bool HaveLine()
    {
        if (m_begin < m_lineEnd)
            return true;
        if (m_atEnd)
            return false;
        Fill();
        return m_begin < m_lineEnd;
    }
    /// Start of the next line.
    const char* GetPlace() const { return m_buffer.data() + m_begin; }
    /// The end of the last whole line of the buffer.
    const char* GetEnd() const { return m_buffer.data() + m_lineEnd; }
    /// The line that begins there, without its line feed and carriage return.
    std::string_view LineAt(const char* a_begin) const;
    /// Start of the line after one from LineAt.
    static const char* After(std::string_view a_line)
    {
        const char* const end = a_line.data() + a_line.size();
        return end + (*end == '\r' ? 2 : 1);
    }
    /// The line at GetPlace is done with; a_next is the start of the one after it.
    void Advance(const char* a_next)
    {
        m_begin = static_cast<std::size_t>(a_next - m_buffer.data());
        ++m_line;
    }
    /// Skips bytes at the start of the first line.
    void Skip(std::size_t a_bytes) { m_begin += a_bytes; }

    /// What was read and not yet processed.
    std::string_view GetBytes() const { return {GetPlace(), m_filled - m_begin}; }
    /// Number of the line at GetPlace, from 1.
    std::uint64_t GetLineNumber() const { return m_line; }
    std::uint64_t GetBytesRead() const { return m_bytesRead; }
    ByteSource& GetSource() const { return m_source; }
    /// Raises RowsFault at the next line.
    [[noreturn]] void Fail(RowsFault::Parts a_fault) const;

private:
    void Fill();

    ByteSource& m_source;
    bool m_growing;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;   // next byte to look at
    std::size_t m_lineEnd = 0; // the end of the last whole line
    std::size_t m_filled = 0;  // past the last byte
    bool m_atEnd = false;      // the source has no more
    std::uint64_t m_line = 1;
    std::uint64_t m_bytesRead = 0;
};

} // namespace kalvento::rows
