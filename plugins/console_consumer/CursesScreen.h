#pragma once

#include "console_consumer/RenderScreen.h"

#include <cstdint>
#include <optional>
#include <utility>

/// What a key asks for.
enum EScreenKey : std::uint8_t {
    EKeyNextInstrument,
    EKeyPreviousInstrument,
    EKeyLongerInterval,
    EKeyShorterInterval,
    EKeyAgain, // keys up to here ask for another picture
    EKeyFreeze,
    EKeyChart,
    EKeyTable,
    EKeyQuit,
    EKeyOther
};

/// The terminal: standard input and output, for as long as this lives. All operations on one thread, the main one; at
/// most one object at a time.
class CursesScreen {
public:
    /// Raises std::runtime_error, Polish, where standard input or output isn't a terminal, or isn't one that can
    /// be painted on. While this lives, std::terminate gives the terminal back too.
    CursesScreen();
    CursesScreen(const CursesScreen&) = delete;
    CursesScreen& operator=(const CursesScreen&) = delete;
    /// Gives the terminal back as it was.
    ~CursesScreen();

    /// Whether colours tell the inks apart: not on a terminal without colours, nor where the user has set NO_COLOR.
    bool HasColours() const { return m_hasColours; }
    /// Whether standard input has ended. To be asked when poll says that it can be read.
    static bool HasGone();

    /// Columns and rows, up to date after the terminal changed them.
    std::pair<int, int> FollowSize();
    void Paint(const ScreenCells& a_cells);
    /// Empty where no key waits.
    std::optional<EScreenKey> ReadKey();

private:
    bool m_hasColours = false;
};
