// The "connection" object.
#include "read_steps.h"

namespace tavmir::project
{

namespace
{

constexpr qint64 kLongestMs = 600000;

// One of two words, as whether it is the first.
bool firstOf(const JsonObject& object, const QString& key, const QString& first,
             const QString& second, const QString& fallback)
{
    const QString word = object.text(key, fallback);
    if (word != first && word != second) {
        object.refuse(key,
                      QString("%1 is neither \"%2\" nor \"%3\"").arg(quoted(word), first, second));
    }
    return word == first;
}

} // namespace

Connection readConnection(const QJsonValue& value)
{
    const JsonObject object(value, "connection",
                            {"host", "port", "station", "stationMode", "connectTimeoutMs",
                             "replyTimeoutMs", "passMs", "reconnectMinMs", "reconnectMaxMs",
                             "retryLimit", "writeMode"});
    const auto milliseconds = [&object](const QString& key, int fallback) {
        return static_cast<int>(object.integer(key, 1, kLongestMs, fallback));
    };
    Connection connection;
    connection.host = object.text("host", connection.host);
    if (connection.host.isEmpty()) {
        object.refuse("host", "is empty");
    }
    connection.port = static_cast<int>(object.integer("port", 1, 65535, connection.port));
    connection.station = static_cast<int>(object.integer("station", 0, 255, connection.station));
    connection.ownStations = firstOf(object, "stationMode", "own", "default", "default");
    connection.connectTimeoutMs = milliseconds("connectTimeoutMs", connection.connectTimeoutMs);
    connection.replyTimeoutMs = milliseconds("replyTimeoutMs", connection.replyTimeoutMs);
    connection.passMs =
        static_cast<int>(object.integer("passMs", 0, kLongestMs, connection.passMs));
    connection.reconnectMinMs = milliseconds("reconnectMinMs", connection.reconnectMinMs);
    connection.reconnectMaxMs = milliseconds("reconnectMaxMs", connection.reconnectMaxMs);
    if (connection.reconnectMaxMs < connection.reconnectMinMs) {
        object.refuse("reconnectMaxMs", QString("%1 is below reconnectMinMs %2")
                                            .arg(connection.reconnectMaxMs)
                                            .arg(connection.reconnectMinMs));
    }
    connection.retryLimit =
        static_cast<int>(object.integer("retryLimit", 0, 1000, connection.retryLimit));
    connection.writesToController =
        firstOf(object, "writeMode", "controller", "local", "controller");
    return connection;
}

} // namespace tavmir::project
