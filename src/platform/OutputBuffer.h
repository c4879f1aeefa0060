#pragma once

#include "platform/Export.h"

#include <iosfwd>
#include <streambuf>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kalvento::internal {

/// What a stream writes through to a descriptor, and remembers why that failed: the standard's own buffers don't tell a
/// reader that went away from a full disk. One thread at a time; flushed when destroyed. The descriptor stays open.
class KALVENTO_API OutputBuffer : public std::streambuf {
public:
    /// A terminal gets text only, without controls (ShownText::Lines); all else gets the bytes.
    OutputBuffer(int a_fd, bool a_isTerminal);
    ~OutputBuffer() override;
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;

    /// Why the stream's writing failed for the first time; empty where it didn't, or where its buffer is none of these.
    static std::error_code ErrorOf(const std::ostream& a_stream);

protected:
    int_type overflow(int_type a_character) override;
    int sync() override;

private:
    void Write(std::string_view a_bytes);

    const int m_fd;
    const bool m_isTerminal;
    std::string m_cut; // the begin of a letter that goes on in the next bytes
    std::vector<char> m_bytes;
    std::error_code m_error;
};

} // namespace kalvento::internal
