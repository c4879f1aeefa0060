#include "kalvento/Tool.h"

#include <csignal>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

int main(int a_count, char** a_arguments)
{
    // A closed pipe then shows as a failed write, and the run can end without leaving a half-written file behind.
    std::signal(SIGPIPE, SIG_IGN);
    std::ios::sync_with_stdio(false);
    std::cin.tie(nullptr);

    kalvento::tool::ToolContext context{std::cin, std::cout, std::cerr};
    context.errIsTerminal = isatty(STDERR_FILENO) == 1;
    context.outIsTerminal = isatty(STDOUT_FILENO) == 1;
    return kalvento::tool::RunTool(std::vector<std::string>(a_arguments + 1, a_arguments + a_count), context);
}
