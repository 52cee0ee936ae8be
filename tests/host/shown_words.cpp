// Lines, objects and rows, cut down to what is the same each time.
#include "shown_words.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace tavmir::host
{

namespace
{

const QStringList kNotShown = {"time", "name", "address", "age_ms", "ageMs"};
// Counters of any run; the others say what went wrong.
const QRegularExpression kCountedAlways("^(requests|replies|bytes.*|connects|attempts|good|sent|"
                                        "missed|events missed.*)$");

// Ports and moments differ; so does a value that was changed on its way.
QString withoutAccidents(QString text)
{
    text.replace(QRegularExpression("127\\.0\\.0\\.1(:| port )[0-9]+"), "HOST:PORT");
    text.replace(QRegularExpression("[0-9-]{10}T[0-9:.]{12}Z"), "TIME");
    text.replace(QRegularExpression("[0-9]+ late or foreign repl(y|ies)"),
                 "N late or foreign replies");
    text.replace(QRegularExpression("(for|since|last reply) [0-9.]+ (ms|s|min)\\b"), "\\1 N \\2");
    return text;
}

QString valueInWords(const QString& value)
{
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    const bool isKnown = !isNumber || number == kLevelIs || number == kLevelBecomes;
    return isKnown ? value : QString("another");
}

QString code(const QString& text)
{
    return "`" + withoutAccidents(text) + "`";
}

QString exitOf(const Said& said)
{
    return QString("exit %1").arg(said.exitStatus);
}

QStringList linesAbout(const QString& text)
{
    QStringList lines;
    for (const QString& line : text.split('\n')) {
        if (line.contains(kLevel)) {
            lines << line;
        }
    }
    return lines;
}

QString lineCell(const Said& said)
{
    static const QRegularExpression kShown("^(Main\\.Level = )(-?[0-9]+)$");
    QStringList parts;
    for (QString line : linesAbout(said.output) + linesAbout(said.errors)) {
        const QRegularExpressionMatch shown = kShown.match(line);
        if (shown.hasMatch()) {
            line = shown.captured(1) + valueInWords(shown.captured(2));
        }
        parts << code(line);
    }
    return parts.isEmpty() ? QString("nothing") : parts.join(", ");
}

QString objectCell(QJsonObject object)
{
    for (const QString& key : kNotShown) {
        object.remove(key);
    }
    QStringList members;
    for (auto member = object.begin(); member != object.end(); ++member) {
        const QJsonValue value = member.value();
        const QString text = value.isNull()     ? QString("null")
                             : value.isString() ? value.toString()
                             : value.isObject() ? QString("object")
                                                : value.toVariant().toString();
        members << QString("%1 %2").arg(member.key(),
                                        member.key() == "value" ? valueInWords(text) : text);
    }
    return withoutAccidents(members.join(", "));
}

// The last object that has the key, or is the variable's.
QJsonObject lastObject(const QString& output, const QString& key, const QString& value = {})
{
    QJsonObject last;
    for (const QString& line : output.split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
        if (object.contains(key) && (value.isEmpty() || object.value(key).toString() == value)) {
            last = object;
        }
    }
    return last;
}

QStringList csvCells(const QString& line)
{
    QStringList cells("");
    bool quoted = false;
    for (const QChar character : line) {
        if (character == '"') {
            quoted = !quoted;
        } else if (character == ',' && !quoted) {
            cells << "";
        } else {
            cells.last() += character;
        }
    }
    return cells;
}

QString csvCell(const QString& output)
{
    const QStringList lines = output.split('\n');
    const QStringList keys = csvCells(lines.first());
    const QStringList about = linesAbout(output);
    if (about.isEmpty()) {
        return "no row";
    }
    const QStringList cells = csvCells(about.last());
    QStringList members;
    for (int i = 0; i < keys.size(); ++i) {
        if (!kNotShown.contains(keys[i])) {
            const QString text = keys[i] == "value" ? valueInWords(cells.value(i)) : cells.value(i);
            members << QString("%1 %2").arg(keys[i], text.isEmpty() ? QString("empty") : text);
        }
    }
    return withoutAccidents(members.join(", "));
}

// The last table's line of state, and the variable's cells behind its name and address.
QString tableCell(const QString& output)
{
    const QStringList blocks = output.split("\n\n");
    QStringList last;
    for (const QString& block : blocks) {
        if (block.contains("VALUE") && block.contains(kLevel)) {
            last = block.trimmed().split('\n');
        }
    }
    if (last.size() < 3) {
        return "no table";
    }
    static const QRegularExpression kRow("^Main\\.Level +Main\\.Level +(.*?)  +"
                                         "(never|[0-9.]+ (?:ms|s|min))(?:  (.*))?$");
    const QRegularExpressionMatch row = kRow.match(last.last());
    QString cell = code(last.first().section("  ", 1)) + ", value " + valueInWords(row.captured(1));
    if (!row.captured(3).isEmpty()) {
        cell += ", " + code(row.captured(3));
    }
    return cell;
}

QStringList countersOfLines(const QString& text)
{
    static const QRegularExpression kCounter("^  ([a-z -]+): ([0-9]+)$");
    QStringList names;
    const QString statistics = text.mid(text.lastIndexOf("statistics of "));
    for (const QString& line : statistics.split('\n')) {
        const QRegularExpressionMatch counter = kCounter.match(line);
        if (counter.hasMatch() && counter.captured(2) != "0" &&
            !kCountedAlways.match(counter.captured(1)).hasMatch()) {
            names << counter.captured(1);
        }
    }
    return names;
}

QStringList countersOfObject(const QJsonObject& statistics)
{
    static const QRegularExpression kFigure("^(seconds|.*Us|scansPerSecond|bytes.*)$");
    QStringList names;
    for (auto figure = statistics.begin(); figure != statistics.end(); ++figure) {
        const bool counts = figure.value().isDouble() && figure.value().toDouble() > 0;
        if (counts && !kFigure.match(figure.key()).hasMatch() &&
            !kCountedAlways.match(figure.key()).hasMatch()) {
            names << figure.key();
        }
    }
    return names;
}

QString inWords(const QStringList& counters, const QStringList& chancy)
{
    QStringList names;
    for (const QString& name : counters) {
        if (!chancy.contains(name)) {
            names << name;
        }
    }
    return names.isEmpty() ? QString("no failure counted") : names.join(", ");
}

} // namespace

QString cellOfCommand(const Said& said, const QString& format)
{
    QString cell = lineCell(said);
    if (format == "json") {
        const QJsonObject object = lastObject(said.output, "address", kLevel);
        cell = object.isEmpty() ? QString("no object") : objectCell(object);
    } else if (format == "csv") {
        cell = csvCell(said.output);
    }
    return cell + "; " + exitOf(said);
}

QString cellOfRun(const Said& said, const QString& format, const QStringList& chancy)
{
    if (format == "json") {
        QJsonObject shown = lastObject(said.output, "values");
        const QJsonArray values = shown.take("values").toArray();
        const QJsonObject row = values.isEmpty() ? QJsonObject() : values.last().toObject();
        const QJsonObject statistics =
            lastObject(said.output, "statistics").value("statistics").toObject();
        return objectCell(shown) + ", " + objectCell(row) + "; " +
               inWords(countersOfObject(statistics), chancy) + "; " + exitOf(said);
    }
    const QString cell = format == "csv" ? csvCell(said.output) : tableCell(said.output);
    const QStringList counters = countersOfLines(format == "csv" ? said.errors : said.output);
    return cell + "; " + inWords(counters, chancy) + "; " + exitOf(said);
}

} // namespace tavmir::host
