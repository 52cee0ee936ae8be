// Filtering and sorting.
#include "row_order.h"

#include <algorithm>
#include <limits>

namespace tavmir::host
{

namespace
{

bool isDigit(const QString& text, int at)
{
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

// The number that begins there, without zeros in front; `at` goes behind it.
QString numberAt(const QString& text, int& at)
{
    while (isDigit(text, at) && text[at] == '0') {
        ++at;
    }
    const int start = at;
    while (isDigit(text, at)) {
        ++at;
    }
    return text.mid(start, at - start);
}

int compareNumbers(const QString& left, const QString& right)
{
    return left.size() != right.size() ? left.size() - right.size() : left.compare(right);
}

int worstFirst(Quality quality)
{
    switch (quality) {
    case Quality::bad:
        return 0;
    case Quality::unconfirmed:
        return 1;
    case Quality::stale:
        return 2;
    case Quality::never:
        return 3;
    case Quality::good:
        break;
    }
    return 4;
}

// Ages that move with every reply would have the rows change places all the time.
qint64 secondsOf(const TableRow& row)
{
    return row.ageMs ? *row.ageMs / 1000 : std::numeric_limits<qint64>::max();
}

int compareRows(const TableRow& left, const TableRow& right, SortBy by)
{
    switch (by) {
    case SortBy::name: {
        const int names = compareNames(left.name, right.name);
        return names != 0 ? names : compareNames(left.address, right.address);
    }
    case SortBy::age:
        return secondsOf(left) == secondsOf(right)  ? 0
               : secondsOf(left) > secondsOf(right) ? -1
                                                    : 1;
    case SortBy::quality:
        return worstFirst(left.quality) - worstFirst(right.quality);
    case SortBy::project:
        break;
    }
    return 0;
}

} // namespace

int compareNames(const QString& left, const QString& right)
{
    int inLeft = 0;
    int inRight = 0;
    while (inLeft < left.size() && inRight < right.size()) {
        int difference = 0;
        if (isDigit(left, inLeft) && isDigit(right, inRight)) {
            const QString number = numberAt(left, inLeft);
            difference = compareNumbers(number, numberAt(right, inRight));
        } else {
            difference = left[inLeft++].toLower().unicode() - right[inRight++].toLower().unicode();
        }
        if (difference != 0) {
            return difference;
        }
    }
    return (left.size() - inLeft) - (right.size() - inRight);
}

std::vector<size_t> shownRows(const std::vector<TableRow>& rows, const QString& filter,
                              const RowOrder& order)
{
    std::vector<size_t> shown;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].name.contains(filter, Qt::CaseInsensitive) ||
            rows[i].address.contains(filter, Qt::CaseInsensitive)) {
            shown.push_back(i);
        }
    }
    std::stable_sort(shown.begin(), shown.end(), [&](size_t left, size_t right) {
        const int difference = compareRows(rows[left], rows[right], order.by);
        return order.reversed ? difference > 0 : difference < 0;
    });
    return shown;
}

QString orderInWords(const RowOrder& order)
{
    switch (order.by) {
    case SortBy::name:
        return "by name";
    case SortBy::age:
        return "by age";
    case SortBy::quality:
        return "by quality";
    case SortBy::project:
        break;
    }
    return QString();
}

} // namespace tavmir::host
