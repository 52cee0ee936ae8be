// Pictures as the bytes that a terminal needs to show them, only what has changed; and its keys.
// The one place that knows ncurses. It never writes to the terminal: whoever draws sends the bytes,
// in their order, all of them, and draws the next picture when they have gone. One at a time in a
// process, one thread.
#ifndef TAVMIR_TERMINAL_CURSES_SCREEN_H
#define TAVMIR_TERMINAL_CURSES_SCREEN_H

#include "picture.h"
#include "table_control.h"

#include <QtCore/QByteArray>

#include <memory>

namespace tavmir::host
{

class CursesScreen
{
public:
    // For the terminal that TERM names; null when that is not known, or cannot place its cursor.
    //   keys      a descriptor that gives keys; -1: none
    //   colours   false: marks and bold only
    static std::unique_ptr<CursesScreen> open(int keys, bool colours);
    ~CursesScreen();
    CursesScreen(const CursesScreen&) = delete;
    CursesScreen& operator=(const CursesScreen&) = delete;

    // The size of the terminal from now on; what it shows is drawn anew.
    void resize(ScreenSize size);
    void redraw();
    QByteArray draw(const Picture& picture);
    // Gives the terminal back the lines that it showed before.
    QByteArray leave();

    // A key that has been pressed; does not wait.
    std::optional<Key> key();

private:
    class Inner;
    explicit CursesScreen(std::unique_ptr<Inner> inner);
    std::unique_ptr<Inner> inner_;
};

} // namespace tavmir::host

#endif
