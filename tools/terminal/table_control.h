// What keys do to the table. Knows no terminal.
#ifndef TAVMIR_TERMINAL_TABLE_CONTROL_H
#define TAVMIR_TERMINAL_TABLE_CONTROL_H

#include "row_order.h"

namespace tavmir::host
{

struct Key {
    enum class Kind {
        character,
        up,
        down,
        pageUp,
        pageDown,
        home,
        end,
        enter,
        escape,
        backspace,
        redraw,
        other
    };
    Kind kind = Kind::other;
    uint character = 0; // Kind::character only
};

enum class TableMode { table, filter, command, help };

// What a key asks of whoever runs the table, beside being drawn anew.
enum class TableWish { nothing, redraw, end, command };

class TableControl
{
public:
    // takesCommands  ":" begins a line that is not the table's
    explicit TableControl(bool takesCommands) : takesCommands_(takesCommands) {}

    TableWish press(const Key& key);

    TableMode mode() const { return mode_; }
    bool takesCommands() const { return takesCommands_; }
    const QString& filter() const { return filter_; }
    const QString& command() const { return command_; } // as far as typed; whole with the wish
    const RowOrder& order() const { return order_; }

    // The first of `count` rows, or lines of help, that is shown where there is room for `room`;
    // what was scrolled too far is taken back.
    int firstOf(int count, int room);

private:
    bool scroll(Key::Kind kind);
    TableWish pressInTable(const Key& key);
    TableWish pressInText(const Key& key, QString& text);
    void sortBy(SortBy by);
    void enter(TableMode mode);

    bool takesCommands_;
    TableMode mode_ = TableMode::table;
    QString filter_;
    QString command_;
    RowOrder order_;
    int first_[2] = {0, 0}; // rows, lines of help
    int room_ = 1;
};

} // namespace tavmir::host

#endif
