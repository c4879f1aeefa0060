#include "text_rows/GrowingSource.h"

#include "text_rows/ToolContext.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <poll.h>
#include <string_view>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kalvento::tool {

namespace {

constexpr std::size_t S_chunk = 1 << 18;
// A line of rows has some hundred bytes. Bytes without any line end are no rows and must not fill the memory.
constexpr std::size_t S_longestLine = 1 << 24;
// Network file systems give no notice of what another machine writes: look now and then in any case.
constexpr std::chrono::milliseconds S_lookEvery{1000};
constexpr std::chrono::milliseconds S_lookEveryWithoutNotices{200};
constexpr std::chrono::milliseconds S_longestPause = std::chrono::hours(1);

[[noreturn]] void FailToRead(const std::string& a_name, const char* a_action)
{
    throw ToolError(EExitNoInput, a_name + ": can't be " + a_action + ": " + std::strerror(errno));
}

} // namespace

GrowingSource::GrowingSource(std::string a_name, EKind a_kind, std::istream* a_stream)
    : ByteSource(std::move(a_name), 0), m_kind(a_kind), m_stream(a_stream)
{}

std::unique_ptr<GrowingSource> GrowingSource::Open(const std::string& a_path, ToolContext& a_context)
{
    std::unique_ptr<GrowingSource> source;
    if (a_path == "-") {
        // The process's own input is read by its descriptor, since a stream can't be waited for.
        const bool isProcessInput = &a_context.in == &std::cin;
        source.reset(
            new GrowingSource("standard input", isProcessInput ? EKindPipe : EKindStream, &a_context.in));
        source->m_file = isProcessInput ? dup(STDIN_FILENO) : -1;
        return source;
    }
    source.reset(new GrowingSource(a_path, EKindFile, nullptr));
    source->OpenFile();
    return source;
}

GrowingSource::~GrowingSource()
{
    CloseAll();
}

void GrowingSource::CloseAll()
{
    for (int* descriptor : {&m_file, &m_notices}) {
        if (*descriptor >= 0)
            close(*descriptor);
        *descriptor = -1;
    }
}

void GrowingSource::OpenFile()
{
    m_file = open(GetName().c_str(), O_RDONLY | O_CLOEXEC);
    if (m_file < 0)
        FailToRead(GetName(), "opened");
    struct stat status {};
    if (fstat(m_file, &status) != 0)
        FailToRead(GetName(), "read");
    if (S_ISDIR(status.st_mode))
        throw ToolError(EExitNoInput, GetName() + ": is a folder; give a file");
    m_kind = S_ISREG(status.st_mode) ? EKindFile : EKindPipe;
    if (m_kind == EKindFile)
        Watch();
}

void GrowingSource::Watch()
{
    m_notices = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_notices < 0)
        return;
    inotify_add_watch(m_notices, GetName().c_str(), IN_MODIFY | IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF);
    // A new file of the same name is news of the folder.
    const auto folder = std::filesystem::path(GetName()).parent_path();
    inotify_add_watch(m_notices, folder.empty() ? "." : folder.c_str(), IN_CREATE | IN_MOVED_TO);
}

void GrowingSource::Restart()
{
    CloseAll();
    m_buffer.clear();
    m_taken = m_whole = 0;
    m_position = 0;
    m_isInLine = false;
    OpenFile();
}

void GrowingSource::ReleaseLastLine()
{
    m_lastLineCounts = true;
    m_whole = m_buffer.size();
}

std::size_t GrowingSource::Read(char* a_bytes, std::size_t a_size)
{
    if (!HasLine())
        return 0;
    const std::size_t count = std::min(a_size, m_whole - m_taken);
    std::copy_n(m_buffer.data() + m_taken, count, a_bytes);
    m_taken += count;
    return count;
}

bool GrowingSource::HasLine()
{
    while (m_taken == m_whole) {
        if (!Fill())
            return false;
    }
    return true;
}

std::size_t GrowingSource::CountLines()
{
    if (m_whole < S_chunk)
        Fill();
    const auto begin = m_buffer.begin();
    return static_cast<std::size_t>(std::count(begin + static_cast<std::ptrdiff_t>(m_taken),
                                               begin + static_cast<std::ptrdiff_t>(m_whole), '\n'));
}

bool GrowingSource::StartsLikeBlock()
{
    if (m_position == 0)
        Fill();
    return m_taken == 0 && std::string_view(m_buffer).starts_with(std::string_view("\x01\0\0\0", 4));
}

// Adds what can be read without waiting. False when there is nothing.
bool GrowingSource::Fill()
{
    m_buffer.erase(0, m_taken);
    m_whole -= m_taken;
    m_taken = 0;
    if (m_buffer.size() > S_longestLine)
        throw ToolError(EExitBadData, GetName() + ": a line longer than 16 MiB is no row of numbers");

    const std::size_t before = m_buffer.size();
    m_buffer.resize(before + S_chunk);
    const std::size_t count = ReadOnce(m_buffer.data() + before, S_chunk);
    m_buffer.resize(before + count);
    m_position += count;
    if (count > 0)
        m_isInLine = m_buffer.back() != '\n';
    if (m_lastLineCounts) {
        // Readers wait for a line end: the last line gets the one that it lacks.
        const bool lacksEnd = count == 0 && m_isInLine;
        m_buffer.append(lacksEnd ? 1 : 0, '\n');
        m_isInLine = m_isInLine && !lacksEnd;
        m_whole = m_buffer.size();
        return count > 0 || lacksEnd;
    }
    const auto lineEnd = std::string_view(m_buffer).substr(before).rfind('\n');
    if (lineEnd != std::string_view::npos)
        m_whole = before + lineEnd + 1;
    return count > 0;
}

std::size_t GrowingSource::ReadOnce(char* a_bytes, std::size_t a_size)
{
    if (m_ended)
        return 0;
    if (m_kind == EKindStream) {
        m_stream->read(a_bytes, static_cast<std::streamsize>(a_size));
        const auto count = static_cast<std::size_t>(m_stream->gcount());
        m_ended = count < a_size;
        return count;
    }
    if (m_kind == EKindPipe) {
        pollfd request{m_file, POLLIN, 0};
        if (poll(&request, 1, 0) <= 0)
            return 0;
    }
    for (;;) {
        const ssize_t count = read(m_file, a_bytes, a_size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            FailToRead(GetName(), "read");
        if (count == 0 && m_kind == EKindPipe)
            m_ended = true;
        return static_cast<std::size_t>(count);
    }
}

std::optional<GrowingSource::EWait> GrowingSource::LookAtFile()
{
    struct stat opened {};
    if (fstat(m_file, &opened) != 0)
        FailToRead(GetName(), "read");
    if (static_cast<std::uint64_t>(opened.st_size) < m_position)
        return EWaitCut;
    struct stat named {};
    // A file that is gone for the moment may be on its way to be replaced.
    if (stat(GetName().c_str(), &named) != 0 ||
        (named.st_ino == opened.st_ino && named.st_dev == opened.st_dev))
        return std::nullopt;
    // Nobody will finish the old file's last line any more.
    if (m_buffer.size() > m_taken) {
        m_buffer += '\n';
        m_isInLine = false;
        m_whole = m_buffer.size();
        return EWaitMore;
    }
    return EWaitReplaced;
}

void GrowingSource::DrainNotices() const
{
    // What happened is seen by looking at the file; notices only wake.
    std::array<char, 4096> notices;
    while (m_notices >= 0 && read(m_notices, notices.data(), notices.size()) > 0)
        continue;
}

GrowingSource::EWait GrowingSource::Wait(std::optional<std::chrono::milliseconds> a_limit, int a_interruption)
{
    using Clock = std::chrono::steady_clock;
    const auto end = a_limit ? Clock::now() + *a_limit : Clock::time_point::max();
    for (;;) {
        if (HasLine())
            return EWaitMore;
        if (m_ended)
            return EWaitEnded;
        if (m_kind == EKindFile) {
            if (const auto change = LookAtFile())
                return *change;
        }

        const auto now = Clock::now();
        auto pause = a_limit ? std::chrono::ceil<std::chrono::milliseconds>(end - std::min(now, end))
                             : std::chrono::milliseconds::max();
        pause = std::min(pause, m_kind != EKindFile ? S_longestPause
                                : m_notices >= 0    ? S_lookEvery
                                                    : S_lookEveryWithoutNotices);
        std::array<pollfd, 2> requests{
            {{m_kind == EKindFile ? m_notices : m_file, POLLIN, 0}, {a_interruption, POLLIN, 0}}};
        // Descriptors below zero are passed over by poll.
        if (poll(requests.data(), requests.size(), static_cast<int>(pause.count())) < 0 && errno != EINTR)
            FailToRead(GetName(), "waited for");
        if (requests[1].revents != 0)
            return EWaitInterrupted;
        DrainNotices();
        if (a_limit && Clock::now() >= end)
            return HasLine() ? EWaitMore : EWaitTimeout;
    }
}

} // namespace kalvento::tool
