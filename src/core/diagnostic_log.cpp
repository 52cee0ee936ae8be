#include "core/diagnostic_log.h"

#include <QtCore/QString>

namespace tavmir {

// The trailing blank is part of each word.
const char kTrace[] = "TRACE ";
const char kInfo[] = "INFO ";
const char kError[] = "ERROR ";

QDebug diagnosticLine(const char* file, const char* function, DiagnosticLineNumber line,
                      const char* level)
{
    QDebug stream(QtDebugMsg);
    stream << file << " " << QString::fromLatin1(function) << " " << static_cast<int>(line) << level;
    return stream;
}

QByteArray hexText(const QByteArray* bytes)
{
    return bytes ? bytes->toHex().toUpper() : QByteArray();
}

} // namespace tavmir
