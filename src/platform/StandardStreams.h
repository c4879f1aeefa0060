#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

/// What a process is born with: standard input, output and errors.
namespace kalvento::internal::StandardStreams {

/// The values are the descriptors.
enum EStream : std::uint8_t { EInput = 0, EOutput = 1, EErrors = 2 };

KALVENTO_API bool IsTerminal(EStream a_stream);
/// Columns and rows of the terminal that standard output is; empty where it is none, or doesn't know its size.
KALVENTO_API std::optional<std::pair<int, int>> GetTerminalSize();
/// Whether bytes wait on standard input. If it is ready to be read and there are none, none will come.
KALVENTO_API bool HasInput();
/// Writes to standard error at once and past all buffers, whose locks a thread that hangs may hold.
KALVENTO_API void WriteErrorsNow(std::string_view a_bytes);
/// From now on a write to a pipe that nobody reads, or beyond the greatest size of a file, fails and doesn't end the
/// process.
KALVENTO_API void LetWritesFail();
/// Where the process was started without one of them, its place is taken by what can neither be read nor written, so that
/// no file that is opened later gets its number. Call it before all else.
KALVENTO_API void TakePlaces();

} // namespace kalvento::internal::StandardStreams
