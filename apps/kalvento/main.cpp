#include "kalvento/Tool.h"
#include "platform/StandardStreams.h"

#include <iostream>
#include <string>
#include <vector>

namespace StandardStreams = kalvento::internal::StandardStreams;

int main(int a_count, char** a_arguments)
{
    // A closed pipe then shows as a failed write, and the run can end without leaving a half-written file.
    StandardStreams::LetWritesFail();
    std::ios::sync_with_stdio(false);
    std::cin.tie(nullptr);

    kalvento::tool::ToolContext context{std::cin, std::cout, std::cerr};
    context.errIsTerminal = StandardStreams::IsTerminal(StandardStreams::EErrors);
    context.outIsTerminal = StandardStreams::IsTerminal(StandardStreams::EOutput);
    return kalvento::tool::RunTool(std::vector<std::string>(a_arguments + 1, a_arguments + a_count), context);
}
