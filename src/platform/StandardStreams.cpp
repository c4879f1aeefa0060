#include "platform/StandardStreams.h"

#include "platform/SystemCall.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kalvento::internal::StandardStreams {

bool IsTerminal(EStream a_stream)
{
    return ::isatty(a_stream) == 1;
}

std::optional<std::pair<int, int>> GetTerminalSize()
{
    winsize size{};
    if (::ioctl(EOutput, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return std::nullopt;
    return std::pair<int, int>(size.ws_col, size.ws_row);
}

bool HasInput()
{
    int count = 0;
    return ::ioctl(EInput, FIONREAD, &count) == 0 && count > 0;
}

void WriteErrorsNow(std::string_view a_bytes)
{
    while (!a_bytes.empty()) {
        const auto written = Retry([&] { return ::write(EErrors, a_bytes.data(), a_bytes.size()); });
        if (written <= 0)
            return; // there is nobody else to tell
        a_bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void LetWritesFail()
{
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
}

void TakePlaces()
{
    for (const EStream stream : {EInput, EOutput, EErrors}) {
        // The lowest free number is the one that is given out.
        if (::fcntl(stream, F_GETFD) < 0) {
            [[maybe_unused]] const int place = ::open("/dev/null", stream == EInput ? O_WRONLY : O_RDONLY);
        }
    }
}

} // namespace kalvento::internal::StandardStreams
