// Lists for the driver.
#include "searched_list.h"

#include "wire/frame_words.h"

namespace tavmir::host
{

namespace
{

QString whyRefused(quint8 code)
{
    return "refused, code " + QString::fromStdString(wire::exceptionInWords(code));
}

} // namespace

constexpr std::chrono::seconds SearchedList::kLeastBetween;

QString SearchedList::replace(const std::vector<PolledElement>& polled)
{
    polled_ = polled;
    search_.watch(polled_);
    return give(Clock::now());
}

QString SearchedList::give(Clock::time_point now)
{
    std::vector<PolledElement> wanted;
    for (size_t i = 0; i < polled_.size(); ++i) {
        if (search_.isWanted(i)) {
            wanted.push_back(polled_[i]);
        }
    }
    const size_t expected = wireOrder(wanted).size();
    // An empty list leaves the one that is polled in place: it is only not asked for any more.
    if (state_.generation > 0 || expected > 0) {
        QList<HOSTVAR> records = hostRecords(wanted);
        const int filed = state_.api.rebuildPolled(&records);
        if (static_cast<size_t>(filed) != expected) {
            return QString("the driver polls %1 of %2 elements").arg(filed).arg(expected);
        }
    }
    ++state_.generation;
    state_.passes.restart(expected, now);
    search_.listGiven();
    differsSince_.reset();
    givenAt_ = now;
    passesBefore_ = state_.passes.passes();
    publishPlan();
    return QString();
}

void SearchedList::publishPlan()
{
    isPlanOld_ = false;
    auto plan = std::make_shared<PolledGeneration>();
    plan->generation = state_.generation;
    plan->polled = polled_;
    for (const CulpritSearch::Refused& one : search_.refusedVariables()) {
        plan->setAside.push_back({one.variable, whyRefused(one.code)});
    }
    FeedEntry entry = entryNow(FeedKind::planChanged);
    entry.plan = plan;
    state_.feed.publish(entry);
}

void SearchedList::polledRequestEnded(bool good, const std::vector<WireElement>& refused,
                                      Clock::time_point now)
{
    if (good) {
        search_.answered();
    } else if (searches_ && !refused.empty()) {
        search_.refused(refused, now);
    }
}

void SearchedList::tried(TryEnd end, quint8 code, Clock::time_point now)
{
    search_.ended(end, code, now);
    for (const CulpritSearch::Change& change : search_.takeChanges()) {
        FeedEntry entry = change.isRefused
                              ? entryNow(FeedKind::elementSetAside, whyRefused(change.code))
                              : entryNow(FeedKind::elementBack);
        entry.variable = polled_[change.variable].name;
        state_.feed.publish(entry);
        isPlanOld_ = true;
    }
}

void SearchedList::giveIfDue(Clock::time_point now)
{
    if (isDue(now)) {
        give(now); // part of a list that it has taken
    } else if (isPlanOld_ && !search_.listDiffers() && !search_.isSearching()) {
        publishPlan(); // what was found had left the list before
    }
}

bool SearchedList::isDue(Clock::time_point now)
{
    if (!search_.listDiffers()) {
        differsSince_.reset();
        return false;
    }
    if (!differsSince_) {
        differsSince_ = now;
    }
    const PassClock& passes = state_.passes;
    if (passes.isPolling() && (!passes.isBetween() || passes.passes() == passesBefore_)) {
        return false;
    }
    return !search_.isSearching() || now - std::max(givenAt_, *differsSince_) >= kLeastBetween;
}

} // namespace tavmir::host
