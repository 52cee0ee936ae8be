// Which rows are shown, and in which order.
#ifndef TAVMIR_TERMINAL_ROW_ORDER_H
#define TAVMIR_TERMINAL_ROW_ORDER_H

#include "table_row.h"

#include <vector>

namespace tavmir::host
{

enum class SortBy { project, name, age, quality };

struct RowOrder {
    SortBy by = SortBy::project;
    bool reversed = false;
};

// The places of the rows whose name or address holds the filter, whatever its case, sorted:
//   project  as they come
//   name     numbers inside by their value: [2] before [10]
//   age      never read first, then the oldest; below a second all are alike
//   quality  the worst first
// What is alike stays as it comes, reversed or not.
std::vector<size_t> shownRows(const std::vector<TableRow>& rows, const QString& filter,
                              const RowOrder& order);

// "", "by name", "by age", "by quality".
QString orderInWords(const RowOrder& order);

// Below, at or above 0, as `left` comes before, is like, or comes after `right`.
int compareNames(const QString& left, const QString& right);

} // namespace tavmir::host

#endif
