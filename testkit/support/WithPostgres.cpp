#include "support/PostgresCluster.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

/// Runs a command with a PostgreSQL server of its own; an argument DATABASE is replaced by the address of an empty
/// database. Ends with the command's exit code, or with 77, which ctest takes as skipped, where there is no server to
/// be had.
int main(int a_count, char** a_arguments)
{
    try {
        PostgresCluster* const cluster = PostgresCluster::Get();
        if (cluster == nullptr)
            return 77;
        std::string connection = cluster->NewDatabase();
        std::vector<char*> command(a_arguments + 1, a_arguments + a_count);
        for (char*& argument : command)
            if (std::string(argument) == "DATABASE")
                argument = connection.data();
        command.push_back(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            ::execvp(command[0], command.data());
            ::_exit(127);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
