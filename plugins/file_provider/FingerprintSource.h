#pragma once

#include "file_provider/Fingerprint.h"
#include "platform/CodePage.h"
#include "text_rows/ByteSource.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <stop_token>

namespace kalvento::files {

/// Passes the first a_size bytes of a source on, takes their fingerprint on the way, and that of its first a_mark
/// bytes. Reading raises std::runtime_error once a_stop asks for the end.
class FingerprintSource final : public rows::ByteSource {
public:
    /// a_size: that of the source's stamp. What has been appended since belongs to the next reading, otherwise what is
    /// known of the size wouldn't be that of the fingerprint.
    FingerprintSource(rows::ByteSource& a_source, std::uint64_t a_size, std::uint64_t a_mark,
                      const std::stop_token& a_stop)
        : ByteSource(a_source.GetName(), a_size),
          m_source(a_source),
          m_bytesLeft(a_size),
          m_left(a_mark),
          m_stop(a_stop)
    {}
    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        if (m_stop.stop_requested())
            throw std::runtime_error("Przerwano wczytywanie pliku"_cp1250);
        const std::size_t count = m_source.Read(a_bytes, std::min<std::uint64_t>(a_size, m_bytesLeft));
        m_bytesLeft -= count;
        const std::size_t before = std::min<std::uint64_t>(m_left, count);
        m_whole.Add({a_bytes, before});
        m_left -= before;
        // A last line without its end may go on: then the rows before aren't all as they were.
        if (before > 0 && m_left == 0 && a_bytes[before - 1] == '\n')
            m_marked = m_whole.Get();
        m_whole.Add({a_bytes + before, count - before});
        return count;
    }
    std::uint64_t GetWhole() const { return m_whole.Get(); }
    /// Empty where there are fewer bytes, and where they don't end with a line.
    std::optional<std::uint64_t> GetMarked() const { return m_marked; }

private:
    rows::ByteSource& m_source;
    std::uint64_t m_bytesLeft;
    std::uint64_t m_left;
    const std::stop_token& m_stop;
    Fingerprint m_whole;
    std::optional<std::uint64_t> m_marked;
};

} // namespace kalvento::files
