#include "tools/console/Screen.h"

#define NCURSES_NOMACROS
#include <fcntl.h>
#include <ncurses.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/PlatformError.h"

namespace {

// Both ends of the pipe by which a signal becomes something to wait for.
int signalReader = -1, signalWriter = -1;

void noteSignal(int number) {
    const int keptError = errno;
    const char mark = number == SIGWINCH ? 'w' : 't';
    static_cast<void>(!::write(signalWriter, &mark, 1));
    errno = keptError;
}

void catchSignals() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw posixError(errno, "make a pipe");
    signalReader = ends[0];
    signalWriter = ends[1];
    struct sigaction action {};
    action.sa_handler = noteSignal;
    for (const int number : {SIGWINCH, SIGTERM, SIGHUP, SIGINT}) ::sigaction(number, &action, nullptr);
}

// Colours that can be read on a light and on a dark ground; without colours bold alone has to do.
attr_t attributesOf(Screen::Style style) {
    using Style = Screen::Style;
    switch (style) {
        case Style::plain:
            return A_NORMAL;
        case Style::folder:
            return A_BOLD | static_cast<attr_t>(COLOR_PAIR(1));
        case Style::command:
            return A_BOLD;
        case Style::success:
            return static_cast<attr_t>(COLOR_PAIR(2));
        case Style::failure:
            return A_BOLD | static_cast<attr_t>(COLOR_PAIR(3));
        case Style::event:
            return static_cast<attr_t>(COLOR_PAIR(4));
        case Style::note:
            return static_cast<attr_t>(COLOR_PAIR(5));
        case Style::bar:
            return A_REVERSE;
    }
    return A_NORMAL;
}

void startColours() {
    if (!::has_colors() || std::getenv("NO_COLOR")) return;
    ::start_color();
    ::use_default_colors();
    constexpr short byPair[] = {COLOR_BLUE, COLOR_GREEN, COLOR_RED, COLOR_MAGENTA, COLOR_CYAN};
    for (short pair = 1; pair <= 5; ++pair) ::init_pair(pair, byPair[pair - 1], -1);
}

void drawAt(int row, int column, int width, Screen::Style style, const std::string& text) {
    if (width <= 0) return;
    // In a window of its own the text cannot reach the other areas, however wide the terminal thinks it is.
    WINDOW* area = ::derwin(::stdscr, 1, width, row, column);
    if (!area) return;
    ::wattrset(area, static_cast<int>(attributesOf(style)));
    ::wbkgdset(area, (style == Screen::Style::bar ? A_REVERSE : A_NORMAL) | ' ');
    ::werase(area);
    ::waddstr(area, text.c_str());
    ::delwin(area);
}

} // namespace

Screen::Screen() {
    if (!::newterm(nullptr, stdout, stdin)) throw posixError(ENOTTY, "draw on this terminal");
    ::raw();
    ::noecho();
    ::nonl();
    startColours();
    catchSignals();
}

Screen::~Screen() {
    ::endwin();
    for (const int number : {SIGWINCH, SIGTERM, SIGHUP, SIGINT}) std::signal(number, SIG_DFL);
    ::close(signalReader);
    ::close(signalWriter);
}

int Screen::height() const {
    return std::max(LINES - 2, 1);
}

// A terminal that is too narrow for both has no tree.
int Screen::treeWidth() const {
    return COLS < 60 ? 0 : std::min(COLS / 3, 48);
}

int Screen::logWidth() const {
    return COLS - (treeWidth() > 0 ? treeWidth() + 1 : 0);
}

void Screen::clear() {
    ::erase();
    if (treeWidth() > 0) ::mvvline(0, treeWidth(), ACS_VLINE, height());
}

void Screen::drawTreeRow(int row, Style style, const std::string& text) {
    drawAt(row, 0, treeWidth(), style, text);
}

void Screen::drawLogRow(int row, Style style, const std::string& text) {
    drawAt(row, COLS - logWidth(), logWidth(), style, text);
}

void Screen::drawBar(const std::string& text) {
    drawAt(LINES - 2, 0, COLS, Style::bar, text);
}

void Screen::drawInput(const std::string& text, int cursorColumn) {
    drawAt(LINES - 1, 0, COLS, Style::plain, text);
    ::move(LINES - 1, std::min(cursorColumn, COLS - 1));
}

void Screen::show() {
    ::refresh();
}

int Screen::signalDescriptor() const {
    return signalReader;
}

Screen::Signal Screen::takeSignal() {
    char mark = 0;
    if (::read(signalReader, &mark, 1) != 1) return Signal::none;
    if (mark != 'w') return Signal::terminated;
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) ::resizeterm(size.ws_row, size.ws_col);
    return Signal::resized;
}

void Screen::leave() {
    ::def_prog_mode();
    ::endwin();
}

void Screen::comeBack() {
    ::reset_prog_mode();
    ::clearok(::stdscr, true);
}
