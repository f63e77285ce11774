#include "IpodControl/terminal/Terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "ServiceUtil/Utf8.h"
// ncurses declares its functions for wide characters when it is asked to, and macros with common names.
#define NCURSES_WIDECHAR 1
#define NCURSES_NOMACROS 1
#include <curses.h>

namespace IpodControl::PlayerView {

namespace {

/// So long an escape sequence may take to come; longer than the pause within one over a slow line.
constexpr int kEscapeMilliseconds = 40;

Charset LocaleCharset() {
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 ? Charset::Utf8 : Charset::Ascii;
}

/// As ncurses counts: 0, 8 or 256. Where it counts more, a number means other colours than the palette's.
int CountColours(bool wantsColours) {
    if (!wantsColours || !has_colors() || start_color() != OK || use_default_colors() != OK) {
        return 0;
    }
    if (COLORS == 256) {
        return 256;
    }
    return COLORS >= 8 ? 8 : 0;
}

attr_t Attributes(const Style& style) {
    return (style.isBold ? A_BOLD : A_NORMAL) | (style.isDim ? A_DIM : A_NORMAL) |
           (style.isReverse ? A_REVERSE : A_NORMAL);
}

bool CanPlaceCursor() {
    char name[] = "cup";
    const char* const capability = tigetstr(name);
    // -1 for what is no text, which this one is.
    return capability != nullptr && reinterpret_cast<std::intptr_t>(capability) != -1;
}

/// ncurses's keys behind all characters, whose numbers they share.
constexpr char32_t Named(wint_t code) {
    return 0x110000 + code;
}

/// `typed`: a character, or a Named one. None for what has no place among the keys.
std::optional<char32_t> KeyOf(char32_t typed) {
    constexpr std::array<std::pair<char32_t, char32_t>, 17> kKeys{{
        {'\r', kEnter},
        {'\n', kEnter},
        {Named(KEY_ENTER), kEnter},
        {'\b', kBackspace},
        {0x7F, kBackspace},
        {Named(KEY_BACKSPACE), kBackspace},
        {0x1B, kEscape},
        {Named(KEY_LEFT), kLeft},
        {Named(KEY_RIGHT), kRight},
        {Named(KEY_UP), kUp},
        {Named(KEY_DOWN), kDown},
        {Named(KEY_PPAGE), kPageUp},
        {Named(KEY_NPAGE), kPageDown},
        {Named(KEY_HOME), kHome},
        {Named(KEY_END), kEnd},
        {0x0C, kRedraw},
        {Named(KEY_REFRESH), kRedraw},
    }};
    const auto* const key =
        std::find_if(kKeys.begin(), kKeys.end(), [typed](const auto& entry) { return entry.first == typed; });
    if (key != kKeys.end()) {
        return key->second;
    }
    return typed < Named(0) ? std::optional(typed) : std::nullopt;
}

}  // namespace

std::unique_ptr<Terminal> Terminal::Open(bool wantsColours, std::string& why) {
    std::setlocale(LC_ALL, "");
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
        why = "The player view needs a terminal to read keys from and to draw on.";
        return nullptr;
    }
    const char* const name = std::getenv("TERM");
    Screen opened(newterm(nullptr, stdout, stdin));
    if (opened && CanPlaceCursor()) {
        return std::unique_ptr<Terminal>(new Terminal(std::move(opened), wantsColours));
    }
    why = std::string("The player view cannot draw on the terminal type \"") + (name == nullptr ? "" : name) +
          "\" (TERM).";
    return nullptr;
}

Terminal::Terminal(Screen opened, bool wantsColours)
    : m_screen(std::move(opened)), m_charset(LocaleCharset()), m_colours(CountColours(wantsColours)) {
    cbreak();
    noecho();
    nonl();
    curs_set(0);
    set_escdelay(kEscapeMilliseconds);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    // Reading keys must not draw.
    leaveok(stdscr, TRUE);
    refresh();
}

void Terminal::CloseScreen::operator()(screen* opened) const {
    endwin();
    delscreen(opened);
}

Size Terminal::Extent() const {
    return {LINES, COLS};
}

void Terminal::Resize() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0) {
        resizeterm(size.ws_row, size.ws_col);
        Redraw();
    }
}

void Terminal::Redraw() {
    m_shown.reset();
    clearok(stdscr, TRUE);
}

void Terminal::Show(const Canvas& canvas) {
    if (m_shown == canvas) {
        return;
    }
    const bool isWhole = !m_shown || m_shown->Extent() != canvas.Extent();
    const Size size = canvas.Extent();
    for (int row = 0; row < size.rows; ++row) {
        for (int column = 0; column < size.columns; ++column) {
            const Cell& cell = canvas.At(row, column);
            // A cell beside a glyph of two columns changes with it.
            const bool isSame = !isWhole && column > 0 && cell == m_shown->At(row, column) &&
                                canvas.At(row, column - 1) == m_shown->At(row, column - 1);
            if (!isSame) {
                ShowCell(row, column, cell);
            }
        }
    }
    m_shown = canvas;
    refresh();
}

void Terminal::ShowCell(int row, int column, const Cell& cell) {
    if (cell.text.empty()) {
        return;
    }
    std::array<wchar_t, CCHARW_MAX + 1> text{};
    std::size_t count = 0;
    for (std::string_view rest = cell.text; !rest.empty() && count < CCHARW_MAX;) {
        text[count++] = static_cast<wchar_t>(TakeCharacter(rest));
    }
    int pair = 0;
    if (m_colours > 0 && (cell.style.foreground >= 0 || cell.style.background >= 0)) {
        pair = std::max(alloc_pair(cell.style.foreground, cell.style.background), 0);
    }
    cchar_t shown{};
    setcchar(&shown, text.data(), Attributes(cell.style), 0, &pair);
    mvwadd_wch(stdscr, row, column, &shown);
}

std::vector<char32_t> Terminal::ReadKeys() {
    constexpr std::size_t kMost = 256;
    std::vector<char32_t> keys;
    wint_t code = 0;
    for (int kind = 0; keys.size() < kMost && (kind = wget_wch(stdscr, &code)) != ERR;) {
        if (const auto key = KeyOf(kind == KEY_CODE_YES ? Named(code) : code)) {
            keys.push_back(*key);
        }
    }
    return keys;
}

}  // namespace IpodControl::PlayerView
