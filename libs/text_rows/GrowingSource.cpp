#include "text_rows/GrowingSource.h"

#include "platform/Descriptors.h"
#include "text_rows/BlockRows.h"
#include "text_rows/RowsFault.h"

#include <algorithm>
#include <array>
#include <istream>
#include <string_view>

namespace kalvento::rows {

namespace {

constexpr std::size_t S_chunk = 1 << 18;
// A line of a row has some hundred bytes. Bytes without any line end are no rows and must not fill the memory.
constexpr std::size_t S_longestLine = 1 << 24;
// Network file systems give no notice of what another machine writes: look now and then in any case.
constexpr std::chrono::milliseconds S_lookEvery{1000};
constexpr std::chrono::milliseconds S_lookEveryWithoutNotices{200};

using Clock = std::chrono::steady_clock;
using internal::Descriptors::Awaited;
using internal::Descriptors::WaitForAny;

[[noreturn]] void FailToRead(const std::string& a_name, const char* a_action, const std::error_code& a_error)
{
    throw RowsFault({.kind = EFaultNoInput,
                     .found = std::string("can't be ") + a_action + ": " + a_error.message(),
                     .file = a_name});
}

} // namespace

GrowingSource::GrowingSource(std::string a_name, EKind a_kind, std::istream* a_stream)
    : ByteSource(std::move(a_name), 0), m_kind(a_kind), m_stream(a_stream)
{}

std::unique_ptr<GrowingSource> GrowingSource::Open(const std::string& a_path)
{
    std::unique_ptr<GrowingSource> source(new GrowingSource(a_path, EKindFile, nullptr));
    source->OpenFile();
    return source;
}

std::unique_ptr<GrowingSource> GrowingSource::OfProcessInput(std::string a_name)
{
    std::unique_ptr<GrowingSource> source(new GrowingSource(std::move(a_name), EKindPipe, nullptr));
    if (const std::error_code error = source->m_file.OpenStandardInput())
        FailToRead(source->GetName(), "opened", error);
    return source;
}

std::unique_ptr<GrowingSource> GrowingSource::FromStream(std::istream& a_stream, std::string a_name)
{
    return std::unique_ptr<GrowingSource>(new GrowingSource(std::move(a_name), EKindStream, &a_stream));
}

void GrowingSource::OpenFile()
{
    if (const std::error_code error = m_file.Open(GetName()))
        FailToRead(GetName(), "opened", error);
    internal::InputFile::State state;
    if (const std::error_code error = m_file.GetState(state))
        FailToRead(GetName(), "read", error);
    if (state.isFolder)
        throw RowsFault({.kind = EFaultNoInput, .found = "is a folder; give a file", .file = GetName()});
    m_kind = state.isRegular ? EKindFile : EKindPipe;
    m_watch = state.isRegular ? internal::FileWatch(GetName()) : internal::FileWatch();
}

void GrowingSource::Restart()
{
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
    return m_taken == 0 && BlockRows::Recognise(m_buffer);
}

// Adds what can be read without waiting. False when there is nothing.
bool GrowingSource::Fill()
{
    m_buffer.erase(0, m_taken);
    m_whole -= m_taken;
    m_taken = 0;
    if (m_buffer.size() > S_longestLine)
        throw RowsFault({.found = "a line longer than 16 MiB is no row of numbers", .file = GetName()});

    const std::size_t before = m_buffer.size();
    m_buffer.resize(before + S_chunk);
    const std::size_t count = ReadOnce(m_buffer.data() + before, S_chunk);
    m_buffer.resize(before + count);
    m_position += count;
    if (count > 0)
        m_isInLine = m_buffer.back() != '\n';
    if (m_lastLineCounts) {
        // Readers wait for a line end, so a last line without one gets it.
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
        Awaited input{m_file.GetFd()};
        if (!WaitForAny({&input, 1}, Clock::time_point::min()))
            return 0;
    }
    std::size_t count = 0;
    if (const std::error_code error = m_file.Read(a_bytes, a_size, count))
        FailToRead(GetName(), "read", error);
    m_ended = count == 0 && m_kind == EKindPipe;
    return count;
}

std::optional<GrowingSource::EWait> GrowingSource::LookAtFile()
{
    internal::InputFile::State opened;
    if (const std::error_code error = m_file.GetState(opened))
        FailToRead(GetName(), "read", error);
    if (opened.size < m_position)
        return EWaitCut;
    const auto named = internal::InputFile::LookAt(GetName());
    // A file that is gone for the moment may be on its way to be replaced.
    if (!named || opened.IsSameFileAs(*named))
        return std::nullopt;
    // Nobody will finish the old file's last line now.
    if (m_buffer.size() > m_taken) {
        m_buffer += '\n';
        m_isInLine = false;
        m_whole = m_buffer.size();
        return EWaitMore;
    }
    return EWaitReplaced;
}

GrowingSource::EWait GrowingSource::Wait(std::optional<std::chrono::milliseconds> a_limit, int a_interruption)
{
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

        auto next = end;
        if (m_kind == EKindFile)
            next = std::min(end,
                            Clock::now() + (m_watch.GetFd() >= 0 ? S_lookEvery : S_lookEveryWithoutNotices));
        std::array<Awaited, 2> awaited = {
            {{m_kind == EKindFile ? m_watch.GetFd() : m_file.GetFd()}, {a_interruption}}};
        WaitForAny(awaited, next);
        if (awaited[1].isReady)
            return EWaitInterrupted;
        m_watch.Drain();
        if (a_limit && Clock::now() >= end)
            return HasLine() ? EWaitMore : EWaitTimeout;
    }
}

} // namespace kalvento::rows
