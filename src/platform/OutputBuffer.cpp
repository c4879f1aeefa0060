#include "platform/OutputBuffer.h"

#include "platform/ShownText.h"
#include "platform/SystemCall.h"

#include <unistd.h>

#include <cstddef>
#include <ostream>

namespace kalvento::internal {

namespace {

constexpr std::size_t S_size = 1 << 16;

} // namespace

OutputBuffer::OutputBuffer(int a_fd, bool a_isTerminal)
    : m_fd(a_fd), m_isTerminal(a_isTerminal), m_bytes(S_size)
{
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

OutputBuffer::~OutputBuffer()
{
    OutputBuffer::sync();
    Write(ShownText::OneLine(m_cut));
}

std::error_code OutputBuffer::ErrorOf(const std::ostream& a_stream)
{
    const auto* const buffer = dynamic_cast<const OutputBuffer*>(a_stream.rdbuf());
    return buffer != nullptr ? buffer->m_error : std::error_code();
}

OutputBuffer::int_type OutputBuffer::overflow(int_type a_character)
{
    if (sync() != 0)
        return traits_type::eof();
    if (!traits_type::eq_int_type(a_character, traits_type::eof()))
        sputc(traits_type::to_char_type(a_character));
    return traits_type::not_eof(a_character);
}

int OutputBuffer::sync()
{
    const std::string_view bytes(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    if (m_isTerminal) {
        std::string text = m_cut.append(bytes);
        m_cut = text.substr(text.size() - ShownText::CountCutBytes(text));
        text.resize(text.size() - m_cut.size());
        Write(ShownText::Lines(text));
    } else {
        Write(bytes);
    }
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    return m_error ? -1 : 0;
}

// After a failure nothing more is written: what would follow a gap is worth nothing.
void OutputBuffer::Write(std::string_view a_bytes)
{
    while (!m_error && !a_bytes.empty()) {
        const auto written = Retry([&] { return ::write(m_fd, a_bytes.data(), a_bytes.size()); });
        m_error = ErrorUnless(written >= 0);
        a_bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

} // namespace kalvento::internal
