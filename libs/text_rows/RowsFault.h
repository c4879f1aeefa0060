#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace kalvento::rows {

enum EFaultKind : std::uint8_t {
    EFaultNoInput, ///< The input can't be opened or read.
    EFaultData,    ///< It was read but can't be taken.
    EFaultOptions  ///< What was asked for is impossible, or doesn't fit the input.
};

/// A member of ReadOptions.
enum EReadOption : std::uint8_t {
    EOptionNone,
    EOptionColumns,
    EOptionDelimiter,
    EOptionFolds,
    EOptionFrom,
    EOptionHeader,
    EOptionInputInterval,
    EOptionOrder,
    EOptionOutputZone,
    EOptionSort,
    EOptionStampedWithEnd,
    EOptionStrict,
    EOptionSymbol,
    EOptionSymbolColumn,
    EOptionTimeFormat,
    EOptionTo,
    EOptionZone
};

/// What can't be taken, where, and what would be accepted instead: all that this library raises on its own. what() says
/// it in plain words, for a log; a program whose users set options words the parts with its names for them.
class RowsFault : public std::runtime_error {
public:
    /// Texts are UTF-8.
    struct Parts {
        EFaultKind kind = EFaultData;
        EReadOption wrong = EOptionNone; ///< Whose value can't be taken.
        EReadOption help = EOptionNone;  ///< Which would help, or doesn't fit `wrong`.
        std::string found{};             ///< What is wrong.
        std::string expected{};          ///< What would be accepted; may be empty.
        std::string value{};    ///< Of `help`: the column to be named, or the value that doesn't fit.
        std::string file{};     ///< The input's name; empty where the fault isn't of an input.
        std::uint64_t line = 0; ///< From 1; 0 where it isn't of a line.
        std::size_t column = 1; ///< Byte in the line, from 1.

        /// "file:line:column: ", or as much of it as is known.
        std::string GetPlace() const;
        /// What is wrong and what would be accepted.
        std::string GetText() const;
    };

    explicit RowsFault(Parts a_parts);
    const Parts& GetParts() const { return m_parts; }

private:
    Parts m_parts;
};

/// Raises EFaultOptions for the value of an option.
[[noreturn]] void RefuseOption(EReadOption a_option, std::string a_found, std::string a_expected = {});

} // namespace kalvento::rows
