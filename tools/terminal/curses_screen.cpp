// ncurses on a file in memory, which takes whatever it writes at once.
#include "curses_screen.h"

#include "terminal_kind.h"

#include <curses.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

constexpr int kEscapeMs = 25; // until an escape is the key, not the beginning of another one
constexpr wint_t kControlL = 0x0c;
constexpr wint_t kEscape = 0x1b;
constexpr wint_t kDelete = 0x7f;

// What ncurses does to signals is undone: others answer them here.
class KeptSignals
{
public:
    KeptSignals()
    {
        for (size_t i = 0; i < kCount; ++i) {
            ::sigaction(kSignals[i], nullptr, &before_[i]);
        }
    }
    ~KeptSignals()
    {
        for (size_t i = 0; i < kCount; ++i) {
            ::sigaction(kSignals[i], &before_[i], nullptr);
        }
    }
    KeptSignals(const KeptSignals&) = delete;
    KeptSignals& operator=(const KeptSignals&) = delete;

private:
    static constexpr size_t kCount = 4;
    static constexpr int kSignals[kCount] = {SIGINT, SIGTERM, SIGTSTP, SIGWINCH};
    struct sigaction before_[kCount];
};

Key::Kind kindOf(wint_t code)
{
    switch (code) {
    case KEY_UP:
        return Key::Kind::up;
    case KEY_DOWN:
        return Key::Kind::down;
    case KEY_PPAGE:
        return Key::Kind::pageUp;
    case KEY_NPAGE:
        return Key::Kind::pageDown;
    case KEY_HOME:
        return Key::Kind::home;
    case KEY_END:
        return Key::Kind::end;
    case KEY_ENTER:
        return Key::Kind::enter;
    case KEY_BACKSPACE:
        return Key::Kind::backspace;
    default:
        return Key::Kind::other;
    }
}

Key keyOf(wint_t character)
{
    switch (character) {
    case '\n':
    case '\r':
        return {Key::Kind::enter, 0};
    case '\b':
    case kDelete:
        return {Key::Kind::backspace, 0};
    case kEscape:
        return {Key::Kind::escape, 0};
    case kControlL:
        return {Key::Kind::redraw, 0};
    default:
        return {character < ' ' ? Key::Kind::other : Key::Kind::character, character};
    }
}

short colourOf(Style style)
{
    switch (style) {
    case Style::bad:
        return COLOR_RED;
    case Style::unconfirmed:
        return COLOR_YELLOW;
    default:
        return -1;
    }
}

attr_t attributesOf(Style style)
{
    switch (style) {
    case Style::strong:
    case Style::bad:
        return A_BOLD;
    case Style::heading:
        return A_REVERSE;
    case Style::hint:
    case Style::stale:
    case Style::never:
        return A_DIM;
    default:
        return A_NORMAL;
    }
}

} // namespace

class CursesScreen::Inner
{
public:
    ~Inner()
    {
        if (screen_ != nullptr) {
            ::delscreen(screen_);
        }
        for (std::FILE* file : {out_, in_}) {
            if (file != nullptr) {
                std::fclose(file);
            }
        }
    }

    bool open(int keys, bool colours)
    {
        if (!isDrawableTerminal()) {
            return false;
        }
        const KeptSignals kept;
        out_ = ::fdopen(::memfd_create("screen", MFD_CLOEXEC), "w+");
        const int in = keys < 0 ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                : ::fcntl(keys, F_DUPFD_CLOEXEC, 0);
        in_ = ::fdopen(in, "r");
        if (out_ == nullptr || in_ == nullptr) {
            return false;
        }
        screen_ = ::newterm(nullptr, out_, in_);
        if (screen_ == nullptr) {
            return false;
        }
        takesKeys_ = keys >= 0;
        ::keypad(stdscr, TRUE);
        ::nodelay(stdscr, TRUE);
        ::typeahead(-1); // a picture is never left half drawn
        ::set_escdelay(kEscapeMs);
        if (colours && ::has_colors()) {
            beginColours();
        }
        return true;
    }

    void beginColours()
    {
        hasColours_ = ::start_color() == OK && ::use_default_colors() == OK;
        for (const Style style : {Style::bad, Style::unconfirmed}) {
            ::init_pair(static_cast<short>(style), colourOf(style), -1);
        }
    }

    void set(Style style)
    {
        const bool coloured = hasColours_ && colourOf(style) >= 0;
        ::wattr_set(stdscr, attributesOf(style), static_cast<short>(coloured ? int(style) : 0),
                    nullptr);
    }

    void draw(const Picture& picture)
    {
        ::werase(stdscr);
        int y = 0;
        for (const PictureLine& line : picture.lines) {
            ::wmove(stdscr, y++, 0);
            for (const Span& span : line) {
                set(span.style);
                ::waddwstr(stdscr, span.text.toStdWString().c_str());
            }
        }
        ::curs_set(picture.cursor ? 1 : 0);
        ::wmove(stdscr, std::max(0, y - 1), picture.cursor.value_or(0));
        ::wnoutrefresh(stdscr);
        ::doupdate();
    }

    // What ncurses has written since the last call.
    QByteArray takeBytes()
    {
        std::fflush(out_);
        const int file = ::fileno(out_);
        const off_t size = ::lseek(file, 0, SEEK_END);
        QByteArray bytes(static_cast<int>(size), '\0');
        const ssize_t got = ::pread(file, bytes.data(), static_cast<size_t>(size), 0);
        bytes.truncate(static_cast<int>(std::max<ssize_t>(0, got)));
        const bool emptied = ::ftruncate(file, 0) == 0 && ::lseek(file, 0, SEEK_SET) == 0;
        return emptied ? bytes : QByteArray();
    }

    std::optional<Key> key()
    {
        if (!takesKeys_) {
            return std::nullopt;
        }
        wint_t code = 0;
        const int kind = ::wget_wch(stdscr, &code);
        if (kind == ERR) {
            return std::nullopt;
        }
        return kind == KEY_CODE_YES ? Key{kindOf(code), 0} : keyOf(code);
    }

private:
    std::FILE* out_ = nullptr;
    std::FILE* in_ = nullptr;
    SCREEN* screen_ = nullptr;
    bool takesKeys_ = false;
    bool hasColours_ = false;
};

CursesScreen::CursesScreen(std::unique_ptr<Inner> inner) : inner_(std::move(inner)) {}

CursesScreen::~CursesScreen() = default;

std::unique_ptr<CursesScreen> CursesScreen::open(int keys, bool colours)
{
    auto inner = std::make_unique<Inner>();
    if (!inner->open(keys, colours)) {
        return nullptr;
    }
    return std::unique_ptr<CursesScreen>(new CursesScreen(std::move(inner)));
}

void CursesScreen::resize(ScreenSize size)
{
    ::resizeterm(size.lines, size.columns);
    redraw();
}

void CursesScreen::redraw()
{
    ::clearok(curscr, TRUE);
}

QByteArray CursesScreen::draw(const Picture& picture)
{
    inner_->draw(picture);
    return inner_->takeBytes();
}

QByteArray CursesScreen::leave()
{
    ::endwin();
    return inner_->takeBytes();
}

std::optional<Key> CursesScreen::key()
{
    return inner_->key();
}

} // namespace tavmir::host
