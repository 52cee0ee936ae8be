// Words and short words.
#include "link_line.h"

#include "text_width.h"

#include <QtCore/QStringList>

namespace tavmir::host
{

namespace
{

QString msText(const std::optional<double>& ms)
{
    if (!ms) {
        return nothingRead();
    }
    return QString("%1 ms").arg(*ms, 0, 'f', *ms < 1 ? 2 : *ms < 100 ? 1 : 0);
}

void add(QStringList& parts, quint64 count, const char* one, const char* many)
{
    if (count > 0) {
        parts << QString("%1 %2").arg(count).arg(count == 1 ? one : many);
    }
}

QString inWords(const RecentLine& line)
{
    QStringList failures;
    add(failures, line.lastMinute.timeouts, "time-out", "time-outs");
    add(failures, line.lastMinute.retries, "retry", "retries");
    add(failures, line.lastMinute.giveUps, "give-up", "give-ups");
    add(failures, line.lastMinute.exceptions, "exception", "exceptions");
    add(failures, line.lastMinute.lostConnections, "lost connection", "lost connections");
    add(failures, line.lastMinute.failedConnects, "failed connect", "failed connects");
    return QString("pass %1  round trip %2  last minute: %3")
        .arg(msText(line.passMs), msText(line.roundTripMs),
             failures.isEmpty() ? QString("no failures") : failures.join(", "));
}

QString inShort(const RecentLine& line)
{
    QStringList failures;
    add(failures, line.lastMinute.timeouts, "t/o", "t/o");
    add(failures, line.lastMinute.retries, "retr", "retr");
    add(failures, line.lastMinute.giveUps, "g/u", "g/u");
    add(failures, line.lastMinute.exceptions, "exc", "exc");
    add(failures, line.lastMinute.lostConnections, "lost", "lost");
    add(failures, line.lastMinute.failedConnects, "no conn", "no conn");
    return QString("%1  pass %2  trip %3")
        .arg(failures.isEmpty() ? QString("1 min ok") : "1 min " + failures.join(' '),
             msText(line.passMs), msText(line.roundTripMs));
}

} // namespace

QString linkLine(const RecentLine& line, int width)
{
    const QString words = inWords(line);
    return cutAtEnd(widthOf(words) <= width ? words : inShort(line), width);
}

} // namespace tavmir::host
