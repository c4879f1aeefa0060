#include "kalvento/Tool.h"
#include "platform/Interruption.h"
#include "platform/OutputBuffer.h"
#include "platform/StandardStreams.h"

#include <iostream>
#include <string>
#include <vector>

namespace StandardStreams = kalvento::internal::StandardStreams;

namespace {

/// A stream writes through another buffer as long as this lives.
class OutputThrough {
public:
    OutputThrough(std::ostream& a_stream, std::streambuf& a_buffer)
        : m_stream(a_stream), m_old(a_stream.rdbuf(&a_buffer))
    {}
    ~OutputThrough() { m_stream.rdbuf(m_old); }
    OutputThrough(const OutputThrough&) = delete;
    OutputThrough& operator=(const OutputThrough&) = delete;

private:
    std::ostream& m_stream;
    std::streambuf* const m_old;
};

} // namespace

int main(int a_count, char** a_arguments)
{
    StandardStreams::TakePlaces();
    // A closed pipe and a limit then show as failed writes, and the run can end without leaving a half-written file.
    StandardStreams::LetWritesFail();
    std::ios::sync_with_stdio(false);
    std::cin.tie(nullptr);
    // Shared with what plug-ins print: whoever writes, the run learns why that failed.
    kalvento::internal::OutputBuffer output(StandardStreams::EOutput,
                                            StandardStreams::IsTerminal(StandardStreams::EOutput));
    const OutputThrough through(std::cout, output);

    kalvento::tool::ToolContext context{std::cin, std::cout, std::cerr};
    context.errIsTerminal = StandardStreams::IsTerminal(StandardStreams::EErrors);
    context.outIsTerminal = StandardStreams::IsTerminal(StandardStreams::EOutput);
    const int exitCode =
        kalvento::tool::RunTool(std::vector<std::string>(a_arguments + 1, a_arguments + a_count), context);
    if (context.endedBy != 0)
        kalvento::internal::Interruption::EndBy(context.endedBy);
    return exitCode;
}
