// The feed folded, look by look.
#include "live_state.h"

#include "plan/expected_frames.h"
#include "plan_json.h"
#include "project/printable.h"
#include "project/raw_address.h"
#include "project/value_format.h"

#include <algorithm>
#include <set>

namespace tavmir::host
{

namespace
{

constexpr auto kQualitiesEach = std::chrono::milliseconds(200);
constexpr auto kCountEach = std::chrono::milliseconds(900);
// Rows whose reading is newer and nothing else go out in turn: so many a look, and all within ten.
constexpr size_t kRefreshed = 200;
constexpr size_t kLooksForAll = 10;
// So many changes in this time are followed one by one. Of more, the last of each value counts, as
// often as values are shown, but twice a second at least.
constexpr auto kFollowedEach = std::chrono::milliseconds(100);
constexpr size_t kMostFollowed = 2500;
constexpr auto kFoundEach = std::chrono::milliseconds(500);
constexpr char kNotReadYet[] = "never: no reply has brought it yet";

bool isSame(const std::vector<PolledElement>& left, const std::vector<PolledElement>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const PolledElement& one, const PolledElement& other) {
                          return one.name == other.name && one.station == other.station &&
                                 one.format == other.format &&
                                 one.element.addressText == other.element.addressText;
                      });
}

} // namespace

LiveState::LiveState(Feed& feed, const project::Project& project, const QualityRules& rules,
                     const Clocks& clocks, const LiveLimits& limits)
    : clocks_(clocks), names_(project), startedAt_(clocks_.wall()),
      setBacks_(clocks_.steady(), startedAt_), reader_(feed.subscribe()), values_(rules),
      kept_(limits.keptBytes), feedEvents_(rules.controller, names_, events_),
      history_(wholeMsOf(startedAt_), limits.historyBytes), linkSince_(startedAt_)
{
}

void LiveState::takeIn()
{
    moments_.look(clocks_);
    next_ = sequence_ + 1;
    reader_->read([this](const FeedEntry& entry) { take(entry); },
                  [this](quint64 missed) {
                      figures_.gap(missed);
                      values_.gap();
                      kept_.gap(missed);
                      feedEvents_.gap(missed, clocks_.wall());
                  });
    followClock(clocks_.steady(), clocks_.wall());
}

void LiveState::keepUp()
{
    takeIn();
    if (isUrgent()) {
        look();
    } else {
        findInTime(clocks_.steady());
    }
}

void LiveState::look()
{
    takeIn();
    feedEvents_.tellRest(clocks_.wall());
    const Clock::time_point now = clocks_.steady();
    if (isUrgent() || budget_.isDue(now)) {
        findChanges();
        show(now);
    } else {
        findInTime(now);
    }
}

void LiveState::findInTime(Clock::time_point now)
{
    if (now - foundAt_ >= (notFollowed_ ? kFoundEach : kFollowedEach)) {
        findChanges();
    }
}

void LiveState::show(Clock::time_point now)
{
    budget_.begin(now);
    const Spending spending(budget_, clocks_);
    showChanges();
    showQualities(now);
    isOther_ = isOther_ || events_.newest() != newestEvent_ || now - countedAt_ >= kCountEach;
    newestEvent_ = events_.newest();
    if (isOther_) {
        sequence_ = next_;
        countedAt_ = now;
        isOther_ = false;
        events_.setSequence(sequence_ + 1);
    }
}

void LiveState::take(const FeedEntry& entry)
{
    if (!entry.standing) {
        followClock(entry.at, entry.wall);
    }
    takeLink(entry);
    figures_.take(entry);
    recent_.take(entry);
    kept_.take(entry);
    feedEvents_.take(entry);
    const bool isList = entry.kind == FeedKind::planChanged && entry.plan != plan_ &&
                        !isSame(entry.plan->polled, values_.variables());
    if (followed_ < kMostFollowed) {
        values_.take(entry, [&](size_t variable) { changed(variable, entry.wall); });
    } else {
        values_.take(entry);
        notFollowed_ = entry.wall;
    }
    if (isList) {
        list(generation_ == 0 ? history_.from() : wholeMsOf(entry.wall));
    }
    if (entry.kind == FeedKind::planChanged && entry.plan != plan_) {
        takePlan(*entry.plan);
        plan_ = entry.plan;
    }
}

void LiveState::takeLink(const FeedEntry& entry)
{
    const bool isLink = entry.kind == FeedKind::connected ||
                        entry.kind == FeedKind::connectFailed ||
                        entry.kind == FeedKind::connectionLost;
    wasTried_ = wasTried_ || isLink;
    const bool changes = (entry.kind == FeedKind::connected && !values_.line().isConnected()) ||
                         (entry.kind == FeedKind::connectionLost && values_.line().isConnected());
    if (changes) {
        linkSince_ = entry.wall;
        isOther_ = true;
    }
}

void LiveState::takePlan(const PolledGeneration& plan)
{
    ++planGeneration_;
    isOther_ = true;
    asked_ = askedOf(plan);
    askedOnWire_ = wireOrder(asked_).size();
    frames_ = expectedFrames(asked_);
    setAside_.clear();
    for (const SetAside& one : plan.setAside) {
        setAside_[one.place] = one.why;
    }
}

// Other variables from now on. What is known of those that stay is kept.
void LiveState::list(qint64 since)
{
    const std::vector<PolledElement>& variables = values_.variables();
    ++generation_;
    listedAt_ = next_;
    isOther_ = true;
    rows_.reset(variables.size(), next_);
    changedAt_.assign(variables.size(), 0);
    numbers_.assign(variables.size(), std::nullopt);
    bytes_.assign(variables.size(), QByteArray());
    changed_.clear();
    trackOf_.assign(variables.size(), std::nullopt);
    qualitiesAt_ = Clock::time_point();
    std::set<QString> followed; // the first of several formats of one address is
    for (size_t i = 0; i < variables.size(); ++i) {
        if (values_.value(i).readAt) {
            changed_.push_back(i);
            changedAt_[i] = wholeMsOf(clocks_.wall());
        }
        if (variables[i].format == project::Format::text) {
            continue;
        }
        const QString address = project::shownAddress(variables[i].element);
        if (!followed.insert(address).second) {
            continue;
        }
        const NumberShape shape = shapeOf(variables[i].element, variables[i].format);
        const auto found = tracks_.find(address);
        trackOf_[i] = found != tracks_.end() ? found->second : history_.addTrack(shape);
        if (found == tracks_.end()) {
            history_.setGap(*trackOf_[i], since, kNotReadYet);
        }
        history_.setShape(*trackOf_[i], shape);
        tracks_[address] = *trackOf_[i];
    }
}

void LiveState::changed(size_t variable, WallClock::time_point moment)
{
    const qint64 at = wholeMsOf(moment);
    ++followed_;
    numbers_[variable] = values_.number(variable);
    if (!numbers_[variable]) {
        bytes_[variable] = values_.value(variable).bytes;
    }
    if (changedAt_[variable] == 0) {
        changed_.push_back(variable);
    }
    changedAt_[variable] = at;
    if (trackOf_[variable]) {
        history_.addSample(*trackOf_[variable], at, numbers_[variable].value_or(0));
    }
}

bool LiveState::differs(size_t variable) const
{
    const std::optional<quint32> number = values_.number(variable);
    return number ? number != numbers_[variable]
                  : values_.value(variable).bytes != bytes_[variable];
}

// Where too much changed to follow each change: what is another value now than at the last look.
void LiveState::findChanges()
{
    for (size_t i = 0; i < numbers_.size() && notFollowed_; ++i) {
        if (differs(i)) {
            changed(i, *notFollowed_);
        }
    }
    notFollowed_.reset();
    followed_ = 0;
    foundAt_ = clocks_.steady();
}

// Values that changed are put into words once a look, however often they did.
void LiveState::showChanges()
{
    for (const size_t variable : changed_) {
        const PolledElement& shown = values_.variables()[variable];
        const QByteArray bytes = values_.value(variable).bytes;
        rows_.setValue(
            variable, project::printable(project::decodeValue(shown.element, shown.format, bytes)),
            project::decodeNumber(shown.element, shown.format, bytes), changedAt_[variable], next_);
        changedAt_[variable] = 0;
        isOther_ = true;
    }
}

void LiveState::showQualities(Clock::time_point now)
{
    const size_t count = rows_.size();
    const bool isTime = now - qualitiesAt_ >= kQualitiesEach;
    if (!isTime && changed_.empty()) {
        return;
    }
    const auto show = [&](size_t variable, bool refresh) {
        const ValueQuality quality = values_.quality(variable, now);
        const std::optional<Clock::time_point> readAt = values_.readAt(variable);
        const qint64 at = readAt ? wholeMsOf(moments_.wallAt(*readAt)) : 0;
        if (trackOf_[variable] && quality.quality != rows_.quality(variable)) {
            tellGap(*trackOf_[variable], quality, at);
        }
        isOther_ = rows_.setQuality(variable, quality, at, refresh, next_) || isOther_;
    };
    if (!isTime) {
        for (const size_t variable : changed_) {
            show(variable, true);
        }
        changed_.clear();
        return;
    }
    changed_.clear(); // they are among all
    // Twice as many, as only each second look at ten a second comes here.
    const size_t refreshed = std::min(count, std::max(kRefreshed, 2 * count / kLooksForAll + 1));
    for (size_t i = 0; i < count; ++i) {
        show(i, (i + count - refreshFrom_) % count < refreshed);
    }
    refreshFrom_ = count == 0 ? 0 : (refreshFrom_ + refreshed) % count;
    qualitiesAt_ = now;
}

// A gap ends with the reading that ended it.
void LiveState::tellGap(size_t track, const ValueQuality& quality, qint64 readAt)
{
    if (quality.quality == Quality::good) {
        history_.setGap(track, readAt, QString());
    } else {
        history_.setGap(track, wholeMsOf(clocks_.wall()),
                        QString("%1: %2").arg(qualityWord(quality.quality), quality.reason));
    }
}

std::optional<size_t> LiveState::trackOf(size_t variable) const
{
    return trackOf_[variable];
}

const char* LiveState::linkState() const
{
    const LineHealth& line = values_.line();
    if (line.isSilent()) {
        return "silent";
    }
    if (line.isConnected()) {
        return line.isRefusing() ? "refusing" : "connected";
    }
    if (line.wasConnected()) {
        return "lost";
    }
    return wasTried_ ? "never" : "connecting";
}

} // namespace tavmir::host
