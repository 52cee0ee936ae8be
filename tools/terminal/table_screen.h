// The live table on the terminal of this program: drawn by the contents that it is given, moved by
// keys. Bytes go to whoever sends them; a picture is drawn only when the one before has gone. One
// thread.
#ifndef TAVMIR_TERMINAL_TABLE_SCREEN_H
#define TAVMIR_TERMINAL_TABLE_SCREEN_H

#include "curses_screen.h"
#include "key_mode.h"
#include "table_drawer.h"

#include <functional>

namespace tavmir::host
{

// How bytes get to the terminal.
struct ScreenOutput {
    std::function<void(const QByteArray&)> send;
    std::function<bool()> isBehind; // something has not gone yet
};

class TableScreen
{
public:
    // Null when the terminal cannot show it. Keys are taken when standard input is a terminal.
    //   takesCommands  lines that are typed behind ":" are wanted
    static std::unique_ptr<TableScreen> open(const ScreenOutput& output, bool takesCommands,
                                             bool colours);
    ~TableScreen();
    TableScreen(const TableScreen&) = delete;
    TableScreen& operator=(const TableScreen&) = delete;

    bool takesKeys() const { return keys_.givesKeys(); }

    void show(const TableContent& content);

    // Looks at keys and at the terminal's size, and draws what they change.
    enum class Wish { nothing, end, command };
    Wish look();
    // The line that was typed, with Wish::command.
    const QString& command() const { return control_.command(); }

    // The terminal as it was before; nothing is drawn any more.
    void leave();

    const std::vector<size_t>& drawn() const { return drawer_.drawn(); }
    int shownInAll() const { return drawer_.shownInAll(); }

private:
    TableScreen(const ScreenOutput& output, bool takesCommands);
    bool begin(bool colours);
    void drawIfWanted();

    ScreenOutput output_;
    KeyMode keys_;
    TableControl control_;
    TableDrawer drawer_;
    std::unique_ptr<CursesScreen> screen_;
    ScreenSize size_;
    TableContent content_;
    bool isWanted_ = false; // something is to be drawn
    bool hasLeft_ = false;
};

} // namespace tavmir::host

#endif
