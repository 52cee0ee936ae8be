// Where in its time a recording that is played back is.
#ifndef TAVMIR_HOST_REPLAY_COURSE_H
#define TAVMIR_HOST_REPLAY_COURSE_H

#include <QtCore/QString>

#include <chrono>
#include <string>

namespace tavmir::host
{

// Times in milliseconds since 1970.
class ReplayCourse
{
public:
    static constexpr double kLeastSpeed = 0.01;
    static constexpr double kMostSpeed = 10000;

    // It stands at the end.
    ReplayCourse(qint64 from, qint64 to) : from_(from), to_(to), at_(static_cast<double>(to)) {}

    // What is covered is more by now, or less.
    void cover(qint64 from, qint64 to);
    // So much time has gone by. At the end it stops.
    void goOn(std::chrono::duration<double, std::milli> time);

    // What an order asks for: {"at"} or {"playing","speed"}, each key may be left out. Played at
    // its end it begins anew. Empty, or what is wrong with it; then nothing changes.
    //   jumped  whether it stands elsewhere now
    QString order(const std::string& json, bool& jumped);

    qint64 from() const { return from_; }
    qint64 to() const { return to_; }
    qint64 at() const { return static_cast<qint64>(at_); }
    bool isPlaying() const { return isPlaying_; }

    // {"from","to","at","playing","speed"}
    //   at  what is shown
    std::string json(qint64 at) const;

private:
    qint64 from_;
    qint64 to_;
    double at_;
    bool isPlaying_ = false;
    double speed_ = 1;
};

} // namespace tavmir::host

#endif
