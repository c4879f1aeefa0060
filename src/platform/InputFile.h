#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

namespace kalvento::internal {

/// A file, a pipe or a device that is read from front to end. One thread at a time. Operations return the error, empty
/// where they succeeded.
class KALVENTO_API InputFile {
public:
    struct State {
        bool isRegular = false;
        bool isFolder = false;
        std::uint64_t size = 0; ///< Of a regular file, in bytes.
        std::uint64_t device = 0;
        std::uint64_t number = 0; ///< Together with the device: which file it is, whatever its name.

        bool IsSameFileAs(const State& a_other) const
        {
            return device == a_other.device && number == a_other.number;
        }
    };

    /// The file of that name now; empty where there is none, or that can't be told.
    static std::optional<State> LookAt(const std::filesystem::path& a_path);

    /// A named pipe waits for its writer, unless a_mayWait is false. Neither this nor Read waits on after a signal that an
    /// Interruption caught: errc::interrupted.
    std::error_code Open(const std::filesystem::path& a_path, bool a_mayWait = true);
    /// The process's own input, which stays open for others when this is closed.
    std::error_code OpenStandardInput();
    void Close() { m_file.Close(); }

    std::error_code GetState(State& a_state) const;
    /// Tells the system to read ahead generously.
    void ExpectAllToBeRead() const;
    /// Up to a_size bytes; a_count is how many came: 0 at the end only, and with an error.
    std::error_code Read(char* a_bytes, std::size_t a_size, std::size_t& a_count) const;
    /// For Descriptors::WaitForAny; -1 where nothing is open.
    int GetFd() const { return m_file.Get(); }

private:
    void NoteKind();

    UniqueFd m_file;
    bool m_mayWait = false; // a read waits for somebody who writes
};

} // namespace kalvento::internal
