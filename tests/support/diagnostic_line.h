// The expected text of a diagnostic line, written as the list of its items:
//
//   expectedLine({"Func_Init", " ", quoted("ReCreatReadVarList"), " ", 197, "TRACE ", ""})
//
// The text is put together by hand, not by the debug stream, so that a wrong item shows.
#ifndef TAVMIR_TESTS_SUPPORT_DIAGNOSTIC_LINE_H
#define TAVMIR_TESTS_SUPPORT_DIAGNOSTIC_LINE_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <initializer_list>

namespace tavmir
{
namespace test
{

// One item of a line, as the stream prints it.
class LineItem
{
public:
    LineItem(const char* plainText) : text(QString::fromUtf8(plainText)) {}
    LineItem(int number) : text(QString::number(number)) {}

    static LineItem verbatim(const QString& printed);

    QString printed() const { return text; }

private:
    LineItem() {}
    QString text;
};

// A QString: in double quotes.
LineItem quoted(const QString& text);
LineItem quoted(const char* text);

// A list of strings: ("a", "b").
LineItem quotedList(const QStringList& texts);

QString expectedLine(std::initializer_list<LineItem> items);

} // namespace test
} // namespace tavmir

#endif
