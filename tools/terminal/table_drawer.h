// The table as a picture, for a screen of any size.
//
//   connected to 127.0.0.1:502                                      12:00:00 UTC
//   pass 12.3 ms  round trip 0.21 ms  last minute: no failures
//   recording: 12.3 of 1024 MiB, covers 2 h 5 min        (where there is a recording)
//     ADDRESS          VALUE    AGE
//     Main.Speed       1500    5 ms
//   ! Main.Temp        20.5     3 s  bad: refused, code 2
//   (the latest messages)
//   1-2 of 2, by name                                                    ? keys
#ifndef TAVMIR_TERMINAL_TABLE_DRAWER_H
#define TAVMIR_TERMINAL_TABLE_DRAWER_H

#include "column_layout.h"
#include "feed/recent_figures.h"
#include "picture.h"
#include "table_control.h"

#include <QtCore/QStringList>

namespace tavmir::host
{

struct TableContent {
    std::vector<TableRow> rows;
    bool connected = false;
    QString state; // of the line, in words
    QString time;
    RecentLine figures;
    QString recording; // in words; empty: nothing is recorded
    bool recordingFails = false;
    QStringList messages; // the latest one last
};

class TableDrawer
{
public:
    Picture draw(const TableContent& content, TableControl& control, ScreenSize size);

    // The rows that the last picture showed, and how many it would have shown on a larger screen.
    const std::vector<size_t>& drawn() const { return drawn_; }
    int shownInAll() const { return count_; }

private:
    void measure(const TableContent& content, const std::vector<size_t>& shown,
                 const TableControl& control, int width);
    void drawTable(const TableContent& content, TableControl& control, int width, int room,
                   Picture& picture);

    ColumnWidths needs_; // they only grow while the same is shown, so that columns stand still
    int width_ = 0;
    QString filter_;
    std::vector<size_t> drawn_;
    int first_ = 0; // of all that are shown
    int count_ = 0;
};

} // namespace tavmir::host

#endif
