// What Qt 4.8 and Qt 5 do differently where these tests touch them, all in this one file:
// installing a message handler, and the exact text of a diagnostic line.
#ifndef TAVMIR_TESTS_SUPPORT_QT_COMPAT_H
#define TAVMIR_TESTS_SUPPORT_QT_COMPAT_H

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace tavmir
{
namespace test
{

// Called with every Qt message of the process.
typedef void (*MessageHook)(QtMsgType type, const QString& text);

namespace detail
{
inline MessageHook& currentHook()
{
    static MessageHook hook = nullptr;
    return hook;
}
} // namespace detail

#if QT_VERSION < 0x050000

namespace detail
{
inline void adapter(QtMsgType type, const char* text)
{
    currentHook()(type, QString::fromLocal8Bit(text));
}
} // namespace detail

inline void installMessageHook(MessageHook hook)
{
    detail::currentHook() = hook;
    qInstallMsgHandler(hook == nullptr ? nullptr : detail::adapter);
}

// The debug stream keeps the blank that it puts after the last item.
inline QString finishedLine(const QString& itemsEachWithBlank)
{
    return itemsEachWithBlank;
}

// A QString in the debug stream: as it is, between double quotes.
inline QString quotedInStream(const QString& text)
{
    return '"' + text + '"';
}

#else

namespace detail
{
inline void adapter(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    currentHook()(type, text);
}
} // namespace detail

inline void installMessageHook(MessageHook hook)
{
    detail::currentHook() = hook;
    qInstallMessageHandler(hook == nullptr ? nullptr : detail::adapter);
}

// The debug stream takes back the blank after the last item.
inline QString finishedLine(const QString& itemsEachWithBlank)
{
    QString line = itemsEachWithBlank;
    if (line.endsWith(' ')) {
        line.chop(1);
    }
    return line;
}

// A QString in the debug stream: between double quotes, with escapes.
inline QString quotedInStream(const QString& text)
{
    QString escaped;
    for (const QChar c : text) {
        if (c == '"' || c == '\\') {
            escaped += '\\' + QString(c);
        } else if (c == '\t') {
            escaped += "\\t";
        } else if (c == '\n') {
            escaped += "\\n";
        } else if (c == '\r') {
            escaped += "\\r";
        } else if (c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() < 0xA0)) {
            escaped += "\\u" + QString::number(c.unicode(), 16).toUpper().rightJustified(4, '0');
        } else {
            escaped += c;
        }
    }
    return '"' + escaped + '"';
}

#endif

} // namespace test
} // namespace tavmir

#endif
