#pragma once

#include "platform/Export.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace kalvento::internal {

/// How a program that was run for its answer came to its end.
struct ProgramEnd {
    enum EHow : std::uint8_t {
        EExited,     ///< number: its exit code.
        EKilled,     ///< number: the signal.
        EOverdue,    ///< It was ended by us, since the deadline had come.
        EGivenUp,    ///< The same, since a_mayGoOn had said no.
        ENotStarted, ///< number: the system's error.
    };
    EHow how = ENotStarted;
    int number = 0;
    std::string answer; ///< What it has written, at most S_mostAnswer bytes.
};

constexpr int S_answerFd = 3;
constexpr std::size_t S_mostAnswer = 65536;

/// Runs a program that may do anything, and waits for it. It reads a_input from standard input and writes its answer to
/// the descriptor S_answerFd; the other standard streams lead nowhere, and no other file of ours is open in it. It has a
/// session of its own, of which nothing is left running afterwards. a_mayGoOn is asked ten times a second. Any
/// thread, which lives until the call returns.
KALVENTO_API ProgramEnd RunProgram(const std::filesystem::path& a_program, std::string_view a_input,
                                   std::chrono::milliseconds a_patience,
                                   const std::function<bool()>& a_mayGoOn);

/// For the program that is run so: it ends with the thread that waits for it, leaves no memory image when it crashes,
/// and other programs that it starts don't inherit the answer. False where the system refuses.
KALVENTO_API bool EndWithParent();
/// The same: writes to the answer.
KALVENTO_API bool WriteAnswer(std::string_view a_bytes);

} // namespace kalvento::internal
