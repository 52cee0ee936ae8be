// How GoogleTest shows Qt's texts and bytes when a comparison fails.
#ifndef TAVMIR_TESTS_SUPPORT_QT_PRINTERS_H
#define TAVMIR_TESTS_SUPPORT_QT_PRINTERS_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '[' << text.toUtf8().constData() << ']';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << bytes.size() << " bytes " << bytes.toHex().constData();
}

#endif
