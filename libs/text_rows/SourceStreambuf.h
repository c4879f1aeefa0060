#pragma once

#include "text_rows/ByteSource.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <streambuf>
#include <string_view>
#include <vector>

namespace kalvento::rows {

/// A source as a stream that counts its bytes.
class SourceStreambuf final : public std::streambuf {
public:
    /// a_start: bytes of the source that were read already.
    explicit SourceStreambuf(ByteSource& a_source, std::string_view a_start = {})
        : m_source(a_source), m_bytes(std::max(a_start.size(), S_readSize)), m_count(a_start.size())
    {
        std::copy(a_start.begin(), a_start.end(), m_bytes.begin());
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + a_start.size());
    }

    /// The bytes read and not yet taken; some, unless the source is at its end.
    std::string_view Peek()
    {
        if (gptr() == egptr())
            underflow();
        return {gptr(), static_cast<std::size_t>(egptr() - gptr())};
    }
    /// Reads to the end and returns how many bytes were not taken before.
    std::uint64_t CountRest()
    {
        std::uint64_t rest = 0;
        for (auto bytes = Peek(); !bytes.empty(); bytes = Peek()) {
            rest += bytes.size();
            setg(eback(), egptr(), egptr());
        }
        return rest;
    }
    std::uint64_t GetCount() const { return m_count; }

protected:
    int_type underflow() override
    {
        const std::size_t count = m_source.Read(m_bytes.data(), m_bytes.size());
        m_count += count;
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + count);
        return count == 0 ? traits_type::eof() : traits_type::to_int_type(m_bytes.front());
    }

private:
    static constexpr std::size_t S_readSize = std::size_t{1} << 18U;

    ByteSource& m_source;
    std::vector<char> m_bytes;
    std::uint64_t m_count;
};

} // namespace kalvento::rows
