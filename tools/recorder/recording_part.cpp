// Tables into rows.
#include "recording_part.h"

#include "schema.h"

namespace tavmir::recorder
{

namespace
{

host::ValueQuality qualityOf(qint64 number, const QString& reason)
{
    const bool isOne = number >= static_cast<qint64>(host::Quality::never) &&
                       number <= static_cast<qint64>(host::Quality::unconfirmed);
    return {isOne ? static_cast<host::Quality>(number) : host::Quality::never, reason};
}

std::optional<double> realOf(const Statement& row, int column)
{
    return row.isNull(column) ? std::nullopt : std::optional<double>(row.real(column));
}

} // namespace

std::unique_ptr<RecordingPart> RecordingPart::open(const Member& member, QString& problem)
{
    problem.clear();
    if (member.bytes == 0) {
        return nullptr;
    }
    std::unique_ptr<Database> database = Database::open(member.path, Database::Mode::read, problem);
    if (!database) {
        problem = isThere(member) ? problem : QString();
        return nullptr;
    }
    std::unique_ptr<RecordingPart> part(new RecordingPart(std::move(database), member.number));
    if (!part->readFacts(problem)) {
        problem = isThere(member) ? problem : QString();
        return nullptr;
    }
    return part;
}

bool RecordingPart::readFacts(QString& problem)
{
    const qint64 version = database_->number("PRAGMA user_version", -1);
    if (version != kSchemaVersion) {
        problem = version < 0 ? database_->problem()
                              : QString("is of version %1, this program reads version %2")
                                    .arg(version)
                                    .arg(kSchemaVersion);
        return false;
    }
    began_ = database_->number("SELECT value FROM about WHERE key = 'began'");
    coveredUntil_ = database_->number("SELECT value FROM about WHERE key = 'covered_until'");
    Statement rows = database_->prepare(
        "SELECT id, address, name, type, format, words, station FROM variable ORDER BY id");
    while (rows.step()) {
        NewVariable row;
        row.id = static_cast<VariableId>(rows.number(0));
        row.variable.address = rows.text(1);
        row.variable.name = rows.text(2);
        row.variable.type = rows.text(3);
        row.variable.format = rows.text(4);
        row.variable.words = static_cast<int>(rows.number(5));
        row.variable.station = static_cast<int>(rows.number(6));
        variables_.push_back(row);
    }
    if (rows.failed()) {
        problem = database_->problem();
    }
    return !rows.failed();
}

QByteArray RecordingPart::project()
{
    Statement row = database_->prepare("SELECT bytes FROM project");
    return row.step() ? row.bytes(0) : QByteArray();
}

QString RecordingPart::projectName()
{
    Statement row = database_->prepare("SELECT name FROM project");
    return row.step() ? row.text(0) : QString();
}

QString RecordingPart::about(const QString& key)
{
    Statement row = database_->prepare("SELECT value FROM about WHERE key = ?");
    row.bind(1, key);
    return row.step() ? row.text(0) : QString();
}

std::vector<VariableId> RecordingPart::polledAt(Micros at)
{
    Statement rows = database_->prepare(
        "SELECT variable FROM polled WHERE at = (SELECT max(at) FROM polled WHERE at <= ?) "
        "ORDER BY place");
    rows.bind(1, at);
    std::vector<VariableId> variables;
    while (rows.step()) {
        variables.push_back(static_cast<VariableId>(rows.number(0)));
    }
    return variables;
}

Standing RecordingPart::standingAt(VariableId variable, Micros at)
{
    Standing standing;
    Statement opening = database_->prepare(
        "SELECT value, read_at, quality, reason FROM opening WHERE variable = ?");
    opening.bind(1, variable);
    if (opening.step()) {
        standing.value = opening.value(0);
        standing.at = opening.isNull(1) ? 0 : opening.number(1);
        standing.quality = qualityOf(opening.number(2), opening.text(3));
        standing.qualityAt = began_;
    }
    Statement sample = database_->prepare(
        "SELECT at, value FROM sample WHERE variable = ? AND at <= ? ORDER BY at DESC LIMIT 1");
    sample.bind(1, variable);
    sample.bind(2, at);
    if (sample.step()) {
        standing.at = sample.number(0);
        standing.value = sample.value(1);
    }
    Statement quality =
        database_->prepare("SELECT at, quality, reason FROM quality WHERE variable = ? AND at <= ? "
                           "ORDER BY at DESC LIMIT 1");
    quality.bind(1, variable);
    quality.bind(2, at);
    if (quality.step()) {
        standing.qualityAt = quality.number(0);
        standing.quality = qualityOf(quality.number(1), quality.text(2));
    }
    return standing;
}

void RecordingPart::samples(VariableId variable, Micros from, Micros to,
                            const std::function<void(const SampleRow&)>& take)
{
    Statement rows = database_->prepare("SELECT at, value FROM sample "
                                        "WHERE variable = ? AND at >= ? AND at < ? ORDER BY at");
    rows.bind(1, variable);
    rows.bind(2, from);
    rows.bind(3, to);
    while (rows.step()) {
        take({variable, rows.number(0), rows.value(1)});
    }
}

void RecordingPart::qualities(VariableId variable, Micros from, Micros to,
                              const std::function<void(const QualityRow&)>& take)
{
    Statement rows = database_->prepare("SELECT at, quality, reason FROM quality "
                                        "WHERE variable = ? AND at >= ? AND at < ? ORDER BY at");
    rows.bind(1, variable);
    rows.bind(2, from);
    rows.bind(3, to);
    while (rows.step()) {
        take({variable, rows.number(0), qualityOf(rows.number(1), rows.text(2))});
    }
}

std::vector<MinuteRow> RecordingPart::minutes(Micros from, Micros to)
{
    Statement rows = database_->prepare(
        "SELECT at, until, requests, replies, retries, give_ups, timeouts, exceptions, "
        "late_frames, connects, connect_failures, lost_connections, bytes_sent, bytes_received, "
        "missed, round_trip_min, round_trip_median, round_trip_p99, round_trip_max "
        "FROM minute WHERE until > ? AND at < ? ORDER BY at");
    rows.bind(1, from);
    rows.bind(2, to);
    std::vector<MinuteRow> minutes;
    while (rows.step()) {
        MinuteRow row;
        row.at = rows.number(0);
        row.until = rows.number(1);
        int column = 2;
        for (quint64* count :
             {&row.requests, &row.replies, &row.retries, &row.giveUps, &row.timeouts,
              &row.exceptions, &row.lateFrames, &row.connects, &row.connectFailures,
              &row.lostConnections, &row.bytesSent, &row.bytesReceived, &row.missed}) {
            *count = static_cast<quint64>(rows.number(column++));
        }
        row.roundTripMin = realOf(rows, column);
        row.roundTripMedian = realOf(rows, column + 1);
        row.roundTripP99 = realOf(rows, column + 2);
        row.roundTripMax = realOf(rows, column + 3);
        minutes.push_back(row);
    }
    return minutes;
}

} // namespace tavmir::recorder
