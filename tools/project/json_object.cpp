// Typed access to JSON objects.
#include "json_object.h"

#include <cmath>

namespace tavmir::project
{

namespace
{

constexpr int kQuotedCharacters = 60;

const char* typeName(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return "null";
    case QJsonValue::Bool:
        return "true or false";
    case QJsonValue::Double:
        return "a number";
    case QJsonValue::String:
        return "a text";
    case QJsonValue::Array:
        return "a list";
    case QJsonValue::Object:
        return "an object";
    case QJsonValue::Undefined:
        break;
    }
    return "nothing";
}

} // namespace

QString escaped(const QString& text)
{
    QString shown;
    for (const QChar character : text) {
        shown += character.isPrint() ? QString(character)
                                     : QString("\\u%1").arg(character.unicode(), 4, 16, QChar('0'));
    }
    return shown;
}

QString quoted(const QString& text)
{
    return "\"" + escaped(text.left(kQuotedCharacters)) +
           (text.size() > kQuotedCharacters ? "…\"" : "\"");
}

JsonObject::JsonObject(const QJsonValue& value, const QString& path, const QStringList& known)
    : path_(path)
{
    if (!value.isObject()) {
        throw Refusal{path, QString("must be an object, not %1").arg(typeName(value))};
    }
    object_ = value.toObject();
    for (auto it = object_.constBegin(); it != object_.constEnd(); ++it) {
        if (!known.contains(it.key())) {
            refuse(it.key(), QString("unknown key; known here: %1").arg(known.join(", ")));
        }
    }
}

QString JsonObject::pathOf(const QString& key) const
{
    return path_.isEmpty() ? key : path_ + "." + key;
}

void JsonObject::refuse(const QString& key, const QString& problem) const
{
    throw Refusal{pathOf(key), problem};
}

QString JsonObject::text(const QString& key) const
{
    if (!has(key)) {
        refuse(key, "is missing");
    }
    const QJsonValue found = value(key);
    if (!found.isString()) {
        refuse(key, QString("must be a text, not %1").arg(typeName(found)));
    }
    return found.toString();
}

QString JsonObject::text(const QString& key, const QString& fallback) const
{
    return has(key) ? text(key) : fallback;
}

qint64 JsonObject::integer(const QString& key, qint64 low, qint64 high) const
{
    if (!has(key)) {
        refuse(key, "is missing");
    }
    return integerOf(value(key), pathOf(key), low, high);
}

qint64 JsonObject::integer(const QString& key, qint64 low, qint64 high, qint64 fallback) const
{
    return has(key) ? integer(key, low, high) : fallback;
}

double JsonObject::number(const QString& key) const
{
    if (!has(key)) {
        refuse(key, "is missing");
    }
    const QJsonValue found = value(key);
    if (!found.isDouble()) {
        refuse(key, QString("must be a number, not %1").arg(typeName(found)));
    }
    return found.toDouble();
}

bool JsonObject::boolean(const QString& key, bool fallback) const
{
    if (!has(key)) {
        return fallback;
    }
    const QJsonValue found = value(key);
    if (!found.isBool()) {
        refuse(key, QString("must be true or false, not %1").arg(typeName(found)));
    }
    return found.toBool();
}

QJsonArray JsonObject::array(const QString& key) const
{
    if (!has(key)) {
        return {};
    }
    const QJsonValue found = value(key);
    if (!found.isArray()) {
        refuse(key, QString("must be a list, not %1").arg(typeName(found)));
    }
    return found.toArray();
}

qint64 integerOf(const QJsonValue& value, const QString& path, qint64 low, qint64 high)
{
    if (!value.isDouble()) {
        throw Refusal{path, QString("must be a whole number, not %1").arg(typeName(value))};
    }
    const double number = value.toDouble();
    if (std::floor(number) != number) {
        throw Refusal{path, QString("must be a whole number, not %1").arg(number)};
    }
    if (number < static_cast<double>(low) || number > static_cast<double>(high)) {
        throw Refusal{path,
                      QString("%1 is outside %2..%3").arg(number, 0, 'f', 0).arg(low).arg(high)};
    }
    return static_cast<qint64>(number);
}

} // namespace tavmir::project
