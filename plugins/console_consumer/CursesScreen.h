#pragma once

#include "console_consumer/RenderScreen.h"

#include <optional>
#include <utility>

/// What a key asks for.
enum EScreenKey : std::uint8_t {
    EKeyOther,
    EKeyNextInstrument,
    EKeyPreviousInstrument,
    EKeyLongerInterval,
    EKeyShorterInterval,
    EKeyFreeze,
    EKeyChart,
    EKeyTable,
    EKeyQuit
};

/// The terminal: standard input and output, for as long as this lives. All operations on one thread, the main one; at most
/// one object at a time.
class CursesScreen {
public:
    /// Raises std::runtime_error, Polish, where standard output is no terminal that can be painted on.
    CursesScreen();
    CursesScreen(const CursesScreen&) = delete;
    CursesScreen& operator=(const CursesScreen&) = delete;
    /// The terminal is as it was.
    ~CursesScreen();

    /// Columns and rows, also after the terminal changed them.
    std::pair<int, int> FollowSize();
    void Paint(const ScreenCells& a_cells);
    /// Empty where no key waits.
    std::optional<EScreenKey> ReadKey();
};
