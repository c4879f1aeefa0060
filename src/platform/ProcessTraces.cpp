#include "platform/ProcessTraces.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace kalvento::internal::ProcessTraces {

namespace {

// The numbers that name what is in that folder; those that the reading itself opens have gone by then.
std::vector<int> NumbersIn(const char* a_folder)
{
    std::vector<int> numbers;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(a_folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        int number = -1;
        std::from_chars(name.data(), name.data() + name.size(), number);
        numbers.push_back(number);
    }
    return numbers;
}

} // namespace

std::size_t CountThreads()
{
    return std::max<std::size_t>(NumbersIn("/proc/self/task").size(), 1);
}

OpenFiles GetOpenFiles()
{
    OpenFiles files;
    for (const int number : NumbersIn("/proc/self/fd")) {
        struct stat state {};
        if (::fstat(number, &state) == 0)
            files[number] = {state.st_dev, state.st_ino};
    }
    return files;
}

} // namespace kalvento::internal::ProcessTraces
