// Takes a JSON object's values by key and type; what is missing, of the wrong type, out of
// range or not asked for is refused with its path. Private to this folder.
#ifndef TAVMIR_PROJECT_JSON_OBJECT_H
#define TAVMIR_PROJECT_JSON_OBJECT_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace tavmir::project
{

// Thrown and caught inside the reader only.
struct Refusal {
    QString path;
    QString problem;
};

// What cannot be printed, as a project file may write it: "\u000a". A message is one line then.
QString escaped(const QString& text);

// Quotes a piece of the file for a message; long or unprintable text is cut and escaped.
QString quoted(const QString& text);

class JsonObject
{
public:
    // Refuses a value that is no object and keys other than `known`.
    JsonObject(const QJsonValue& value, const QString& path, const QStringList& known);

    const QString& path() const { return path_; }
    QString pathOf(const QString& key) const;
    bool has(const QString& key) const { return object_.contains(key); }
    QJsonValue value(const QString& key) const { return object_.value(key); }

    QString text(const QString& key) const;
    QString text(const QString& key, const QString& fallback) const;
    qint64 integer(const QString& key, qint64 low, qint64 high) const;
    qint64 integer(const QString& key, qint64 low, qint64 high, qint64 fallback) const;
    double number(const QString& key) const;
    bool boolean(const QString& key, bool fallback) const;
    // Empty when the key is missing.
    QJsonArray array(const QString& key) const;

    [[noreturn]] void refuse(const QString& key, const QString& problem) const;

private:
    QString path_;
    QJsonObject object_;
};

// A JSON integer within low..high.
qint64 integerOf(const QJsonValue& value, const QString& path, qint64 low, qint64 high);

} // namespace tavmir::project

#endif
