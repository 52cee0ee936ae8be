// "polled", "initial" and "signals": what is done with the variables.
#include "read_steps.h"

#include "address_expansion.h"
#include "project_reader.h"
#include "value_format.h"

#include <QtCore/QSet>

#include <cmath>
#include <limits>

namespace tavmir::project
{

namespace
{

struct NamedSignal {
    const char* name;
    SignalKind kind;
};

constexpr NamedSignal kSignals[] = {
    {"constant", SignalKind::constant}, {"ramp", SignalKind::ramp},
    {"sine", SignalKind::sine},         {"square", SignalKind::square},
    {"counter", SignalKind::counter},   {"randomWalk", SignalKind::randomWalk},
};

constexpr qint64 kLongestPeriodMs = Q_INT64_C(24) * 3600 * 1000;
constexpr double kLargestWhole = 9007199254740992.0; // 2^53

void refuseTwice(const JsonObject& object, const QString& key, QSet<QString>& seen,
                 const QString& text)
{
    if (seen.contains(text)) {
        object.refuse(key, QString("%1 is there already").arg(quoted(text)));
    }
    seen.insert(text);
}

// The address as one element.
Element readElement(const JsonObject& object, const Project& project, QSet<QString>& seen)
{
    const QString address = object.text("address");
    const Resolution resolution = resolveAddress(project, address);
    if (!resolution.ok) {
        object.refuse("address", QString("%1: %2").arg(quoted(address), resolution.problem));
    }
    refuseTwice(object, "address", seen, address);
    return resolution.element;
}

Format readFormat(const JsonObject& object, const std::vector<Element>& elements)
{
    const Format format = readFormatKey(object).value_or(Format::automatic);
    // Among many elements the format is for those that it fits.
    if (elements.size() == 1 && !formatFits(elements.front(), format)) {
        object.refuse("format", QString("%1 cannot be shown as %2")
                                    .arg(elements.front().addressText, formatName(format)));
    }
    return format;
}

QString valueText(const JsonObject& object)
{
    const QJsonValue value = object.value("value");
    if (value.isString()) {
        return value.toString();
    }
    if (value.isBool()) {
        return value.toBool() ? "1" : "0";
    }
    if (!value.isDouble()) {
        object.refuse("value", object.has("value") ? "must be a number, a text, true or false"
                                                   : "is missing");
    }
    const double number = value.toDouble();
    if (std::floor(number) == number && std::abs(number) < kLargestWhole) {
        return QString::number(static_cast<qint64>(number));
    }
    return QString::number(number, 'g', std::numeric_limits<double>::max_digits10);
}

SignalKind readKind(const JsonObject& object)
{
    const QString name = object.text("signal");
    for (const NamedSignal& named : kSignals) {
        if (name == named.name) {
            return named.kind;
        }
    }
    object.refuse("signal", QString("unknown signal %1").arg(quoted(name)));
}

// Which keys a signal of this kind takes, beside "address" and "signal".
QStringList keysOf(SignalKind kind)
{
    switch (kind) {
    case SignalKind::constant:
        return {"value"};
    case SignalKind::counter:
        return {"low", "high", "periodMs", "step"};
    case SignalKind::randomWalk:
        return {"low", "high", "periodMs", "step", "seed"};
    default:
        return {"low", "high", "periodMs"};
    }
}

double readLevel(const JsonObject& object, const QString& key, const Element& element)
{
    const double level = object.number(key);
    const NumberRange range = numberRange(element);
    if (level < range.low || level > range.high) {
        object.refuse(key,
                      QString("%1 is outside %2..%3").arg(level).arg(range.low).arg(range.high));
    }
    return level;
}

Signal readSignal(const QJsonValue& value, const QString& path, const Project& project,
                  QSet<QString>& seen)
{
    const JsonObject any(value, path,
                         {"address", "signal", "value", "low", "high", "periodMs", "step", "seed"});
    Signal signal;
    signal.path = path;
    signal.kind = readKind(any);
    const JsonObject object(value, path, QStringList{"address", "signal"} + keysOf(signal.kind));
    const Element element = readElement(object, project, seen);
    signal.address = element.addressText;
    if (element.type == DataType::text) {
        object.refuse("address", QString("%1 is a text and cannot move").arg(signal.address));
    }
    if (signal.kind == SignalKind::constant) {
        signal.low = signal.high = readLevel(object, "value", element);
        return signal;
    }
    signal.low = readLevel(object, "low", element);
    signal.high = readLevel(object, "high", element);
    if (signal.high <= signal.low) {
        object.refuse("high", QString("%1 is not above low %2").arg(signal.high).arg(signal.low));
    }
    signal.periodMs =
        static_cast<int>(object.integer("periodMs", 1, kLongestPeriodMs, signal.periodMs));
    if (object.has("step")) {
        signal.step = object.number("step");
    }
    if (!(signal.step > 0)) {
        object.refuse("step", "must be above 0");
    }
    signal.seed = static_cast<quint32>(
        object.integer("seed", 0, std::numeric_limits<quint32>::max(), signal.seed));
    return signal;
}

} // namespace

std::optional<Format> readFormatKey(const JsonObject& object)
{
    if (!object.has("format")) {
        return std::nullopt;
    }
    const QString name = object.text("format");
    const std::optional<Format> format = formatFromName(name);
    if (!format) {
        object.refuse("format", QString("unknown format %1").arg(quoted(name)));
    }
    return format;
}

void readPolled(const QJsonArray& list, Project& project)
{
    QSet<QString> names;
    qint64 elements = 0;
    for (int i = 0; i < list.size(); ++i) {
        const JsonObject object(list.at(i), QString("polled[%1]").arg(i),
                                {"address", "format", "station", "count", "name"});
        Polled polled;
        polled.path = object.path();
        polled.address = object.text("address");
        polled.count = static_cast<int>(object.integer("count", 1, kMaxElements, 1));
        const Expansion expansion = expandAddress(project, polled.address, polled.count);
        if (!expansion.ok) {
            object.refuse("address",
                          QString("%1: %2").arg(quoted(polled.address), expansion.problem));
        }
        elements += static_cast<qint64>(expansion.elements.size());
        if (elements > kMaxElements) {
            object.refuse("address", QString("more than %1 elements are polled").arg(kMaxElements));
        }
        polled.name = object.text("name", polled.address);
        refuseTwice(object, object.has("name") ? "name" : "address", names, polled.name);
        polled.format = readFormat(object, expansion.elements);
        if (object.has("station")) {
            polled.station = static_cast<int>(object.integer("station", 0, 255));
            if (!project.connection.ownStations) {
                object.refuse("station", "needs the connection's \"stationMode\": \"own\"; with "
                                         "\"default\" all is asked of its one station");
            }
        }
        project.polled.push_back(polled);
    }
}

void readInitial(const QJsonArray& list, Project& project)
{
    QSet<QString> seen;
    for (int i = 0; i < list.size(); ++i) {
        const JsonObject object(list.at(i), QString("initial[%1]").arg(i), {"address", "value"});
        const Element element = readElement(object, project, seen);
        InitialValue initial;
        initial.path = object.path();
        initial.address = element.addressText;
        initial.value = valueText(object);
        const EncodedValue encoded = encodeValue(element, Format::automatic, initial.value);
        if (!encoded.ok) {
            object.refuse("value", encoded.problem);
        }
        project.initial.push_back(initial);
    }
}

void readSignals(const QJsonArray& list, Project& project)
{
    QSet<QString> seen;
    for (int i = 0; i < list.size(); ++i) {
        const QString path = QString("signals[%1]").arg(i);
        project.movingSignals.push_back(readSignal(list.at(i), path, project, seen));
    }
}

} // namespace tavmir::project
