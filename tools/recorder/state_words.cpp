// The words.
#include "state_words.h"

#include "project/counted.h"

#include <QtCore/QDateTime>

namespace tavmir::recorder
{

namespace
{

constexpr double kMiB = 1 << 20;

bool isUnit(const QString& word)
{
    return word == "ms" || word == "s" || word == "min" || word == "h";
}

bool isNumber(const QString& word)
{
    bool isOne = false;
    word.toDouble(&isOne);
    return isOne;
}

QString spanText(Micros span)
{
    const qint64 minutes = span / kMinute;
    if (minutes == 0) {
        return QString("%1 s").arg(span / kSecond);
    }
    if (minutes < 60) {
        return QString("%1 min").arg(minutes);
    }
    return minutes < 48 * 60 ? QString("%1 h %2 min").arg(minutes / 60).arg(minutes % 60)
                             : QString("%1 d %2 h").arg(minutes / 1440).arg(minutes / 60 % 24);
}

} // namespace

QString withoutDurations(const QString& reason)
{
    QStringList words;
    for (const QString& word : reason.split(' ')) {
        QString unit = word;
        while (unit.endsWith(':') || unit.endsWith(',') || unit.endsWith(')')) {
            unit.chop(1);
        }
        if (isUnit(unit) && !words.isEmpty() && isNumber(words.last())) {
            words.removeLast();
            continue;
        }
        words << word;
    }
    return words.join(' ');
}

QString bytesText(quint64 bytes)
{
    return QString("%1 MiB").arg(static_cast<double>(bytes) / kMiB, 0, 'f', 1);
}

QString recordingWords(const RecordingState& state)
{
    if (!state.isOn()) {
        const QString since =
            QDateTime::fromMSecsSinceEpoch(state.failedAt / 1000, Qt::UTC).toString("hh:mm:ss");
        return QString("NOT RECORDING since %1 UTC: %2").arg(since, state.problem);
    }
    QString words = QString("recording: %1 of %2 MiB, covers %3")
                        .arg(static_cast<double>(state.bytes) / kMiB, 0, 'f', 1)
                        .arg(state.limit >> 20)
                        .arg(spanText(state.until - state.from));
    if (state.lostSamples > 0) {
        words += ", " + project::counted(state.lostSamples, "sample", "samples") + " lost";
    }
    if (state.missedEvents > 0) {
        words += ", " + project::counted(state.missedEvents, "event", "events") + " missed";
    }
    return words;
}

QString momentText(Micros at)
{
    return QDateTime::fromMSecsSinceEpoch(at / 1000, Qt::UTC).toString(Qt::ISODateWithMs);
}

} // namespace tavmir::recorder
