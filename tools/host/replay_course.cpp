// Time goes on, and orders are taken.
#include "replay_course.h"

#include "page/json_writer.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <cmath>

namespace tavmir::host
{

void ReplayCourse::cover(qint64 from, qint64 to)
{
    from_ = from;
    to_ = std::max(from, to);
    at_ = std::clamp(at_, static_cast<double>(from_), static_cast<double>(to_));
}

void ReplayCourse::goOn(std::chrono::duration<double, std::milli> time)
{
    if (!isPlaying_) {
        return;
    }
    const auto end = static_cast<double>(to_);
    at_ = std::min(end, at_ + time.count() * speed_);
    isPlaying_ = at_ < end;
}

QString ReplayCourse::order(const std::string& json, bool& jumped)
{
    jumped = false;
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(json.data(), static_cast<int>(json.size())), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return "the body must be an object with \"at\", or with \"playing\" and \"speed\"";
    }
    const QJsonObject object = document.object();
    for (const QString& key : object.keys()) {
        if (key != "at" && key != "playing" && key != "speed") {
            return "the body knows \"at\", \"playing\" and \"speed\" only";
        }
    }
    const QJsonValue at = object.value("at");
    const QJsonValue playing = object.value("playing");
    const QJsonValue speed = object.value("speed");
    if (!at.isUndefined() && !at.isDouble()) {
        return "\"at\" must be a number: milliseconds since 1970";
    }
    if (!playing.isUndefined() && !playing.isBool()) {
        return "\"playing\" must be true or false";
    }
    if (!speed.isUndefined() &&
        (!speed.isDouble() || speed.toDouble() < kLeastSpeed || speed.toDouble() > kMostSpeed)) {
        return QString("\"speed\" must be a number from %1 to %2").arg(kLeastSpeed).arg(kMostSpeed);
    }
    const double before = at_;
    const bool begins = playing.toBool(false) && !isPlaying_ && at_ >= static_cast<double>(to_);
    at_ = std::clamp(at.toDouble(begins ? static_cast<double>(from_) : at_),
                     static_cast<double>(from_), static_cast<double>(to_));
    speed_ = speed.toDouble(speed_);
    isPlaying_ = playing.toBool(isPlaying_) && at_ < static_cast<double>(to_);
    jumped = at_ != before;
    return QString();
}

std::string ReplayCourse::json(qint64 at) const
{
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("from").whole(from_).key("to").whole(to_).key("at").whole(at);
    json.key("playing").boolean(isPlaying_).key("speed").number(speed_).endObject();
    return out;
}

} // namespace tavmir::host
