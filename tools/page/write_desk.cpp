// Writes in and out of JSON.
#include "write_desk.h"

#include "json_writer.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace tavmir::host
{

namespace
{

constexpr int kLongestText = 4096;

ParsedWrite refused(const QString& problem)
{
    ParsedWrite parsed;
    parsed.problem = problem;
    return parsed;
}

bool isText(const QJsonValue& value)
{
    return value.isString() && value.toString().size() <= kLongestText;
}

} // namespace

ParsedWrite parseWrite(const std::string& body)
{
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(body.data(), static_cast<int>(body.size())), &error);
    if (error.error != QJsonParseError::NoError) {
        return refused("the body is no JSON: " + error.errorString());
    }
    if (!document.isObject()) {
        return refused("the body must be an object with \"address\" and \"value\"");
    }
    const QJsonObject object = document.object();
    for (const QString& key : object.keys()) {
        if (key != "address" && key != "value" && key != "expect") {
            return refused("the body knows \"address\", \"value\" and \"expect\" only");
        }
    }
    if (!isText(object.value("address")) || !isText(object.value("value"))) {
        return refused("\"address\" and \"value\" must be texts");
    }
    const QJsonValue expect = object.value("expect");
    if (!expect.isUndefined() && !isText(expect)) {
        return refused("\"expect\" must be a text");
    }
    ParsedWrite parsed;
    parsed.write.address = object.value("address").toString();
    parsed.write.value = object.value("value").toString();
    if (!expect.isUndefined()) {
        parsed.write.expect = expect.toString();
    }
    return parsed;
}

std::string writeJson(const WriteEnd& end, const QString& old)
{
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("outcome").text(outcomeWord(end.outcome.state));
    json.key("text").text(end.text).key("old").textOrNull(old).key("readBack");
    if (end.readBack) {
        json.beginObject().key("text").text(end.readBack->text);
        json.key("number").number(end.readBack->number);
        json.key("quality").text(qualityWord(end.readBack->quality.quality));
        json.key("reason").text(end.readBack->quality.reason).endObject();
    } else {
        json.null();
    }
    json.endObject();
    return out;
}

} // namespace tavmir::host
