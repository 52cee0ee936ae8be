// From file or bytes to a checked project.
#include "project_reader.h"

#include "json_scan.h"
#include "read_steps.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

namespace tavmir::project
{

namespace
{

ReadOutcome refuse(const QString& source, const QString& problem)
{
    ReadOutcome outcome;
    outcome.error = QString("%1: %2").arg(source, escaped(problem));
    return outcome;
}

ReadOutcome refuseAt(const QString& source, const QByteArray& json, int offset,
                     const QString& problem)
{
    const TextPlace place = placeOf(json, offset);
    return refuse(source,
                  QString("line %1, column %2: %3").arg(place.line).arg(place.column).arg(problem));
}

// What the parser says of a file whose end is missing depends on the byte at which it stops.
bool endsTooSoon(const JsonScan& scan, const QJsonParseError& error)
{
    return scan.openOffset >= 0 && error.offset >= scan.lastToken;
}

ReadOutcome refuseMalformed(const QString& source, const QByteArray& json, const JsonScan& scan,
                            const QJsonParseError& error)
{
    const int end = endOfText(json);
    if (end == 0) {
        return refuseAt(source, json, 0, "the file is empty");
    }
    if (!endsTooSoon(scan, error)) {
        return refuseAt(source, json, error.offset, error.errorString());
    }
    const TextPlace open = placeOf(json, scan.openOffset);
    return refuseAt(source, json, end,
                    QString("the file ends in the middle of %1 that begins at line %2, column %3")
                        .arg(scan.openKind)
                        .arg(open.line)
                        .arg(open.column));
}

Project readParts(const QJsonObject& root, const QString& source)
{
    const JsonObject object(root, QString(),
                            {"connection", "types", "labels", "polled", "initial", "signals"});
    Project project;
    project.source = source;
    if (object.has("connection")) {
        project.connection = readConnection(object.value("connection"));
    }
    readTypes(object.array("types"), project);
    readLabels(object.array("labels"), project);
    checkTypes(project);
    readPolled(object.array("polled"), project);
    readInitial(object.array("initial"), project);
    readSignals(object.array("signals"), project);
    return project;
}

} // namespace

ReadOutcome readProjectFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return refuse(fileName, QString("cannot be read: %1").arg(file.errorString()));
    }
    // A device or pipe has no size to ask for: one byte more than allowed is read instead.
    const QByteArray json = file.read(kMaxFileBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        return refuse(fileName, QString("cannot be read: %1").arg(file.errorString()));
    }
    return readProject(json, fileName);
}

ReadOutcome readProject(const QByteArray& json, const QString& source)
{
    if (json.size() > kMaxFileBytes) {
        return refuse(source, QString("larger than %1 bytes").arg(kMaxFileBytes));
    }
    const JsonScan scan = scanJson(json, kMaxNesting);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    const bool malformed = error.error != QJsonParseError::NoError;
    if (scan.offset >= 0 && (!malformed || scan.offset < error.offset)) {
        return refuseAt(source, json, scan.offset, scan.problem);
    }
    if (malformed) {
        return refuseMalformed(source, json, scan, error);
    }
    if (!document.isObject()) {
        return refuse(source, "must be one JSON object");
    }
    try {
        ReadOutcome outcome;
        outcome.project = readParts(document.object(), source);
        return outcome;
    } catch (const Refusal& refusal) {
        return refuse(source, refusal.path.isEmpty() ? refusal.problem
                                                     : refusal.path + ": " + refusal.problem);
    }
}

} // namespace tavmir::project
