#pragma once

#include "platform/FileWatch.h"
#include "platform/InputFile.h"
#include "text_rows/ByteSource.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kalvento::rows {

/// Whole lines of an input that still grows: a file to which somebody appends, a pipe, standard input. A last line that
/// is half written waits for its line end. Reading never waits; Wait does. One thread at a time.
class GrowingSource final : public ByteSource {
public:
    /// Why waiting ended.
    enum EWait : std::uint8_t {
        EWaitMore,       ///< There are new lines to read.
        EWaitTimeout,    ///< Nothing came in the time given.
        EWaitCut,        ///< The file became shorter than what was read of it: call Restart.
        EWaitReplaced,   ///< Another file has the name now, as after a rotation: call Restart.
        EWaitEnded,      ///< The other end of the pipe was closed; nothing will come.
        EWaitInterrupted ///< The user asked to end.
    };

    /// a_path: a file or a named pipe. Raises RowsFault (EFaultNoInput), as reading does.
    static std::unique_ptr<GrowingSource> Open(const std::string& a_path);
    /// The process's own input, read by its descriptor, since a stream can't be waited for.
    static std::unique_ptr<GrowingSource> OfProcessInput(std::string a_name);
    /// A stream that gives all it has at once, and outlives the source.
    static std::unique_ptr<GrowingSource> FromStream(std::istream& a_stream, std::string a_name);

    /// Bytes of the whole lines that are there now; 0 when there are none at the moment.
    std::size_t Read(char* a_bytes, std::size_t a_size) override;
    /// True when a whole line waits to be read.
    bool HasLine();
    /// How many whole lines wait, as far as a first piece of some hundred kilobytes tells.
    std::size_t CountLines();
    /// True when the first bytes are those of a binary series block.
    bool StartsLikeBlock();
    /// Waits for a change, at most a_limit (empty: for ever), or until a_interruption (a descriptor, -1 for none) can
    /// be read.
    EWait Wait(std::optional<std::chrono::milliseconds> a_limit, int a_interruption);
    /// Begins again at the start of the file that has the name now. Half a line of the old one is forgotten.
    void Restart();
    /// From now on a last line without a line end counts as whole, and gets one: nothing more is expected.
    void ReleaseLastLine();
    /// Whether there is existing content before what is waited for: false for a pipe, whose lines are all live.
    bool IsFile() const { return m_kind == EKindFile; }

private:
    enum EKind : std::uint8_t { EKindFile, EKindPipe, EKindStream };

    GrowingSource(std::string a_name, EKind a_kind, std::istream* a_stream);
    void OpenFile();
    bool Fill();
    std::size_t ReadOnce(char* a_bytes, std::size_t a_size);
    std::optional<EWait> LookAtFile();

    EKind m_kind;
    std::istream* m_stream; // EKindStream only
    internal::InputFile m_file;
    internal::FileWatch m_watch;  // where the system gives no notices, a look at intervals must do
    std::uint64_t m_position = 0; // bytes read of the file
    bool m_ended = false;
    bool m_lastLineCounts = false;
    bool m_isInLine = false; // the last byte read was no line end
    std::string m_buffer;
    std::size_t m_taken = 0; // of m_buffer, handed out
    std::size_t m_whole = 0; // of m_buffer, up to the end of the last whole line
};

} // namespace kalvento::rows
