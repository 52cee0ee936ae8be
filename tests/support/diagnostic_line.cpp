#include "support/diagnostic_line.h"

#include "support/qt_compat.h"

namespace tavmir
{
namespace test
{

LineItem LineItem::verbatim(const QString& printed)
{
    LineItem item;
    item.text = printed;
    return item;
}

LineItem quoted(const QString& text)
{
    return LineItem::verbatim(quotedInStream(text));
}

LineItem quoted(const char* text)
{
    return quoted(QString::fromUtf8(text));
}

LineItem quotedList(const QStringList& texts)
{
    QStringList parts;
    for (const QString& text : texts) {
        parts << quotedInStream(text);
    }
    return LineItem::verbatim('(' + parts.join(", ") + ')');
}

QString expectedLine(std::initializer_list<LineItem> items)
{
    QString line;
    for (const LineItem& item : items) {
        line += item.printed() + ' ';
    }
    return finishedLine(line);
}

} // namespace test
} // namespace tavmir
