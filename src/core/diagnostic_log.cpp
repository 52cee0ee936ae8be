#include "core/diagnostic_log.h"

#include <QtCore/QString>

namespace tavmir
{

// The trailing blank is part of each word.
const char kTrace[] = "TRACE ";
const char kInfo[] = "INFO ";
const char kError[] = "ERROR ";

namespace
{

void begin(QDebug& stream, const char* file, const char* function, DiagnosticLineNumber line,
           const char* level)
{
    stream << file << " " << QString::fromLatin1(function) << " " << static_cast<int>(line)
           << level;
}

} // namespace

QDebug diagnosticLine(const char* file, const char* function, DiagnosticLineNumber line,
                      const char* level)
{
    QDebug stream(QtDebugMsg);
    begin(stream, file, function, line, level);
    return stream;
}

RepeatedLine::RepeatedLine(const char* file, const char* function, DiagnosticLineNumber line,
                           const char* level)
{
    QString beginning;
    {
        QDebug stream(&beginning);
        begin(stream, file, function, line, level);
    }
    text_ = beginning.toLatin1();
    beginning_ = text_.size();
}

void RepeatedLine::write(const char* payload)
{
    text_.truncate(beginning_);
    text_.append(payload);
    QDebug(QtDebugMsg) << text_.constData();
}

QByteArray hexText(const QByteArray* bytes)
{
    return bytes ? bytes->toHex().toUpper() : QByteArray();
}

} // namespace tavmir
