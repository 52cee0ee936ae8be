// How the width of a screen is shared among the columns. The value comes first: name and age are
// left out before it is not to be seen.
#ifndef TAVMIR_TERMINAL_COLUMN_LAYOUT_H
#define TAVMIR_TERMINAL_COLUMN_LAYOUT_H

namespace tavmir::host
{

// Of each column; 0: left out.
struct ColumnWidths {
    int name = 0;
    int address = 0;
    int value = 0;
    int age = 0;
    int quality = 0; // its word and the reason; the mark has a place of its own
};

constexpr int kMarkWidth = 2; // with the space behind it
constexpr int kColumnGap = 2;

// needs  the widest text of each column with its heading; 0: nothing to show
ColumnWidths shareWidth(const ColumnWidths& needs, int width);

} // namespace tavmir::host

#endif
