#include "kalvento/TargetStream.h"

#include "kalvento/OutputTarget.h"

#include <exception>
#include <streambuf>
#include <string>

namespace kalvento::tool {

class TargetStream::Buffer final : public std::streambuf {
public:
    explicit Buffer(OutputTarget& a_target) : m_target(a_target) {}

    void Finish()
    {
        Flush();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

protected:
    std::streamsize xsputn(const char* a_bytes, std::streamsize a_count) override
    {
        const std::string_view bytes(a_bytes, static_cast<std::size_t>(a_count));
        if (bytes.size() >= S_flushAt) {
            // A whole column comes as one piece: no copy of it.
            Flush();
            Hand(bytes);
        } else {
            m_waiting += bytes;
            if (m_waiting.size() >= S_flushAt)
                Flush();
        }
        return m_failure ? 0 : a_count;
    }

    int_type overflow(int_type a_character) override
    {
        if (traits_type::eq_int_type(a_character, traits_type::eof()))
            return traits_type::not_eof(a_character);
        const char character = traits_type::to_char_type(a_character);
        return xsputn(&character, 1) == 1 ? a_character : traits_type::eof();
    }

private:
    static constexpr std::size_t S_flushAt = 1 << 16;

    void Flush()
    {
        Hand(m_waiting);
        m_waiting.clear();
    }

    void Hand(std::string_view a_bytes)
    {
        if (m_failure || a_bytes.empty())
            return;
        try {
            m_target.Write(a_bytes);
        } catch (...) {
            m_failure = std::current_exception();
        }
    }

    OutputTarget& m_target;
    std::string m_waiting;
    std::exception_ptr m_failure;
};

TargetStream::TargetStream(OutputTarget& a_target)
    : m_buffer(std::make_unique<Buffer>(a_target)), m_stream(m_buffer.get())
{}

TargetStream::~TargetStream() = default;

void TargetStream::Finish()
{
    m_buffer->Finish();
}

} // namespace kalvento::tool
