#include "velo/Log.h"

#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FolderTools.h"
#include "platform/RotatingFile.h"
#include "platform/ShownText.h"

#include <fmt/format.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace VeloTools {

namespace {

constexpr std::uint64_t S_fileSize = std::uint64_t{10} * 1024 * 1024;
constexpr std::size_t S_olderFiles = 4;
constexpr const char* S_fileName = "Kalvento.log";
// Local time, thread and our text, separated by tabs: a text holds none, so a line can be split into its parts.
constexpr const char* S_pattern = "%Y-%m-%d %H:%M:%S.%e\t%t\t%v";

// Set while this thread runs a sink: what it writes then must not come back to the sinks, or there would be no end.
thread_local bool S_insideSink = false;

std::string Escape(std::string_view a_text)
{
    std::string plain;
    plain.reserve(a_text.size());
    for (const wchar_t character : CodePage::Cp1250ToWide(a_text)) {
        if (character == L'\\')
            plain += '\\'; // two, so that an escape can be told from a text that looks like one
        kalvento::internal::ShownText::Append(plain, character);
    }
    return plain;
}

// spdlog has a sink that rotates, but it cuts off what another process has just written when both rotate at once.
class FileSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit FileSink(std::filesystem::path a_path) : m_file(std::move(a_path), S_fileSize, S_olderFiles)
    {
        Check(m_file.Open());
    }

private:
    void sink_it_(const spdlog::details::log_msg& a_message) override
    {
        spdlog::memory_buf_t line;
        formatter_->format(a_message, line);
        Check(m_file.Write({line.data(), line.size()}));
    }
    void flush_() override {}
    static void Check(std::error_code a_error)
    {
        if (a_error)
            throw std::system_error(a_error);
    }

    kalvento::internal::RotatingFile m_file;
};

std::shared_ptr<spdlog::sinks::sink> WithPattern(std::shared_ptr<spdlog::sinks::sink> a_target)
{
    a_target->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        S_pattern, spdlog::pattern_time_type::local, std::string("\n")));
    return a_target;
}

// True where the operating system is known to have the text.
bool WriteTo(spdlog::sinks::sink& a_target, const std::string& a_text) noexcept
{
    try {
        a_target.log(spdlog::details::log_msg(spdlog::string_view_t(), spdlog::level::info, a_text));
        a_target.flush();
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

struct Log::Impl {
    struct Entry {
        SinkId id = 0;
        Sink sink;
        std::size_t running = 0; // calls under way, under the mutex
        bool removed = false;    // under the mutex
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    std::mutex mutex;
    std::condition_variable sinkLeft;
    std::shared_ptr<const Entries> entries = std::make_shared<Entries>();
    SinkId lastId = 0;
    std::shared_ptr<spdlog::sinks::sink> file; // null before a folder is known
    const std::shared_ptr<spdlog::sinks::sink> standardError =
        WithPattern(std::make_shared<spdlog::sinks::stderr_sink_mt>());

    std::shared_ptr<spdlog::sinks::sink> GetFile()
    {
        const std::lock_guard lock(mutex);
        return file;
    }

    void CallSinks(std::string_view a_source, int a_line, std::string_view a_message)
    {
        std::shared_ptr<const Entries> current;
        {
            const std::lock_guard lock(mutex);
            current = entries;
        }
        for (const auto& entry : *current) {
            {
                const std::lock_guard lock(mutex);
                if (entry->removed)
                    continue;
                ++entry->running;
            }
            S_insideSink = true;
            try {
                entry->sink(a_source, a_line, a_message);
            } catch (...) { // NOLINT(bugprone-empty-catch): a listener's failure must not reach the caller.
            }
            S_insideSink = false;
            {
                const std::lock_guard lock(mutex);
                --entry->running;
            }
            sinkLeft.notify_all();
        }
    }
};

Log& Log::Instance()
{
    // Never destroyed: static objects of the plug-ins write while they die.
    static Log* const log = new Log;
    return *log;
}

Log::Log() : m_impl(std::make_unique<Impl>()) {}

Log::~Log() = default;

void Log::Write(std::string_view a_source, int a_line, std::string_view a_message) noexcept
{
    try {
        const std::string text = fmt::format("{}\t{}\t{}", Escape(a_source), a_line, Escape(a_message));
        const auto file = m_impl->GetFile();
        if (!file || !WriteTo(*file, text))
            WriteTo(*m_impl->standardError, text);
        if (!S_insideSink)
            m_impl->CallSinks(a_source, a_line, a_message);
    } catch (...) {
        // Out of memory: what can still be said without any.
        std::fputs("Kalvento: out of memory while writing to the log\n", stderr);
    }
}

bool Log::SetLogFolder(const std::filesystem::path& a_folder) noexcept
{
    try {
        std::shared_ptr<spdlog::sinks::sink> file;
        if (!a_folder.empty()) {
            // Where others can write, one could lay a link under the log's name, and we would write where it leads.
            if (!FolderTools::MakeFolder(a_folder) || !FolderTools::IsUsersOwn(a_folder))
                throw std::system_error(std::make_error_code(std::errc::permission_denied));
            file = WithPattern(std::make_shared<FileSink>(a_folder / S_fileName));
        }
        const std::lock_guard lock(m_impl->mutex);
        m_impl->file.swap(file);
        return true;
    } catch (const std::system_error& failure) {
        Write("Log::SetLogFolder", __LINE__,
              "Nie można utworzyć folderu dziennika: "_cp1250 +
                  kalvento::internal::ErrorText(failure.code()));
    } catch (...) {
        Write("Log::SetLogFolder", __LINE__, "Nie można otworzyć pliku dziennika"_cp1250);
    }
    return false;
}

void Log::Flush() noexcept
{
    try {
        const auto file = m_impl->GetFile();
        (file ? *file : *m_impl->standardError).flush();
    } catch (...) { // NOLINT(bugprone-empty-catch): every line was handed over already; nothing is lost here.
    }
}

Log::SinkId Log::AddSink(Sink a_sink)
{
    auto entry = std::make_shared<Impl::Entry>();
    entry->sink = std::move(a_sink);
    const std::lock_guard lock(m_impl->mutex);
    entry->id = ++m_impl->lastId;
    auto entries = std::make_shared<Impl::Entries>(*m_impl->entries);
    entries->push_back(entry);
    m_impl->entries = std::move(entries);
    return entry->id;
}

void Log::RemoveSink(SinkId a_sink) noexcept
{
    try {
        std::unique_lock lock(m_impl->mutex);
        auto entries = std::make_shared<Impl::Entries>(*m_impl->entries);
        const auto found = std::find_if(entries->begin(), entries->end(),
                                        [a_sink](const auto& a_entry) { return a_entry->id == a_sink; });
        if (found == entries->end())
            return;
        const std::shared_ptr<Impl::Entry> entry = *found;
        entry->removed = true;
        entries->erase(found);
        m_impl->entries = std::move(entries);
        // Two sinks that remove each other would wait for ever.
        if (!S_insideSink)
            m_impl->sinkLeft.wait(lock, [&entry] { return entry->running == 0; });
    } catch (...) {
        Write("Log::RemoveSink", __LINE__, "Nie można usunąć odbiorcy dziennika"_cp1250);
    }
}

} // namespace VeloTools
