// The wide form of the functions below.
#define NCURSES_WIDECHAR 1

#include "console_consumer/CursesScreen.h"

#include "platform/CodePage.h"
#include "platform/StandardStreams.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <langinfo.h>
#include <ncurses.h>
#include <stdexcept>
#include <string>
#include <term.h>

namespace StandardStreams = kalvento::internal::StandardStreams;

namespace {

struct Key {
    wint_t key;
    EScreenKey meaning;
    bool isFunction = false; // one of the numbers of the library, not a character
};

constexpr Key S_keys[] = {
    {L'n', EKeyNextInstrument},
    {KEY_RIGHT, EKeyNextInstrument, true},
    {L'p', EKeyPreviousInstrument},
    {KEY_LEFT, EKeyPreviousInstrument, true},
    {L'+', EKeyLongerInterval},
    {L'=', EKeyLongerInterval},
    {L'i', EKeyLongerInterval},
    {L'-', EKeyShorterInterval},
    {L'r', EKeyAgain},
    {L' ', EKeyFreeze},
    {L'c', EKeyChart},
    {L't', EKeyTable},
    {L'q', EKeyQuit},
    {L'Q', EKeyQuit},
};

short PairOf(EScreenInk a_ink)
{
    return static_cast<short>(a_ink + 1);
}

attr_t AttributesOf(const ScreenCell& a_cell)
{
    attr_t attributes = A_NORMAL;
    if (a_cell.bold)
        attributes |= A_BOLD;
    if (a_cell.reversed)
        attributes |= A_REVERSE;
    if (a_cell.ink == EInkDim)
        attributes |= A_DIM;
    return attributes;
}

std::terminate_handler S_formerHandler = nullptr;

// An uncaught exception may come from any plug-in's thread: its message would be painted over, and the shell left
// without echo.
[[noreturn]] void GiveTerminalBack()
{
    endwin();
    if (S_formerHandler != nullptr)
        S_formerHandler();
    std::abort();
}

} // namespace

CursesScreen::CursesScreen()
{
    // Characters only: otherwise all numbers of the process would be written with the locale's comma.
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
    if (!StandardStreams::IsTerminal(StandardStreams::EInput) ||
        !StandardStreams::IsTerminal(StandardStreams::EOutput))
        throw std::runtime_error("Standardowe wejście lub wyjście nie jest terminalem"_cp1250);
    const char* const kind = std::getenv("TERM");
    SCREEN* const screen = newterm(nullptr, stdout, stdin);
    if (screen == nullptr || cursor_address == nullptr) {
        if (screen != nullptr)
            endwin();
        const bool isNamed = kind != nullptr && *kind != '\0';
        throw std::runtime_error(isNamed ? "Na terminalu takiego rodzaju nie da się rysować, TERM="_cp1250 +
                                               std::string(kind)
                                         : "Nie wiadomo, jaki to terminal: brak zmiennej TERM"_cp1250);
    }
    S_formerHandler = std::set_terminate(&GiveTerminalBack);
    cbreak();
    noecho();
    nonl();
    curs_set(0);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    set_escdelay(25);
    const char* const noColour = std::getenv("NO_COLOR");
    m_hasColours = has_colors() && (noColour == nullptr || *noColour == '\0');
    if (m_hasColours) {
        start_color();
        use_default_colors();
        init_pair(PairOf(EInkNormal), -1, -1);
        init_pair(PairOf(EInkDim), -1, -1);
        init_pair(PairOf(EInkUp), COLOR_GREEN, -1);
        init_pair(PairOf(EInkDown), COLOR_RED, -1);
        init_pair(PairOf(EInkAccent), COLOR_CYAN, -1);
    }
}

CursesScreen::~CursesScreen()
{
    endwin();
    std::set_terminate(S_formerHandler);
}

bool CursesScreen::HasGone()
{
    return !StandardStreams::HasInput();
}

std::pair<int, int> CursesScreen::FollowSize()
{
    const auto size = StandardStreams::GetTerminalSize();
    if (size && is_term_resized(size->second, size->first))
        resizeterm(size->second, size->first);
    return {COLS, LINES};
}

void CursesScreen::Paint(const ScreenCells& a_cells)
{
    erase();
    for (int row = 0; row < a_cells.GetHeight() && row < LINES; ++row) {
        for (int column = 0; column < a_cells.GetWidth() && column < COLS; ++column) {
            const ScreenCell cell = a_cells.At(column, row);
            const wchar_t text[2] = {cell.text, L'\0'};
            cchar_t character;
            setcchar(&character, text, AttributesOf(cell), m_hasColours ? PairOf(cell.ink) : short{0},
                     nullptr);
            mvadd_wch(row, column, &character);
        }
    }
    refresh();
}

std::optional<EScreenKey> CursesScreen::ReadKey()
{
    wint_t key = 0;
    const int kind = get_wch(&key);
    if (kind == ERR)
        return {};
    const bool isFunction = kind == KEY_CODE_YES;
    const auto found = std::ranges::find_if(
        S_keys, [&](const Key& a_key) { return a_key.isFunction == isFunction && a_key.key == key; });
    return found == std::end(S_keys) ? EKeyOther : found->meaning;
}
