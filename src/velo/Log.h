#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>

namespace VeloTools {

/// The one logger of the process. Safe from any thread, also while static objects are built and destroyed.
/// Until a log folder is known, lines go to standard error; from then on to a rotating UTF-8 file in that folder.
/// A line: local time, thread, source, line, message. Control characters and line ends of a text are written as `\n`,
/// `\r`, `\t` or `\xHH` and a backslash as two, so that no text can pose as a line of its own.
class KALVENTO_API Log {
public:
    /// Receives every line: source and message as given (CP1250), and the source line. Called on the thread that
    /// writes, without a lock held, so a sink may write, add and remove sinks; what a sink writes does not come back
    /// to the sinks on that thread. What it throws is dropped. Sinks of several threads run at once.
    using Sink = std::function<void(std::string_view a_source, int a_line, std::string_view a_message)>;
    /// Names a sink; never 0, and never given out twice.
    using SinkId = std::uint64_t;

    static Log& Instance();

    /// a_source: qualified name of the calling function; a_line: its source line; a_message: Polish text in CP1250.
    /// Never throws; a line that can't be written to the file goes to standard error.
    void Write(std::string_view a_source, int a_line, std::string_view a_message) noexcept;

    /// From now on lines go to Kalvento.log in that folder, which is created; five files of 10 MiB are kept. False
    /// where it can't be opened, or others can write there: nothing changes then. Empty: back to standard error.
    bool SetLogFolder(const std::filesystem::path& a_folder) noexcept;
    /// Hands what was written so far to the operating system.
    void Flush() noexcept;

    SinkId AddSink(Sink a_sink);
    /// Waits until the sink runs on no other thread; then its captures may die. An unknown name is ignored. A sink may
    /// remove itself or another: a thread inside a sink doesn't wait.
    void RemoveSink(SinkId a_sink) noexcept;

    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

private:
    Log();
    ~Log();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace VeloTools
