// Halving, conviction, acquittal.
#include "culprit_search.h"

#include <algorithm>
#include <map>

namespace tavmir::host
{

namespace
{

constexpr int kMostElements = 1024; // of one try: what the driver's one-shot list holds
constexpr int kMostTogether = 28;   // elements of any class that always share a request

// What two lists know the same variable by.
using Key = std::tuple<QString, int, int>;

Key keyOf(const PolledElement& polled)
{
    return {polled.element.addressText, polled.station, project::wireElementCount(polled.element)};
}

} // namespace

constexpr std::chrono::seconds CulpritSearch::kFirstPause;
constexpr std::chrono::seconds CulpritSearch::kLongestPause;
constexpr std::chrono::milliseconds CulpritSearch::kLeastGap;
constexpr std::chrono::milliseconds CulpritSearch::kLongestGap;

bool CulpritSearch::isBefore(const Place& left, const Place& right)
{
    return left.element < right.element;
}

void CulpritSearch::watch(const std::vector<PolledElement>& variables)
{
    const std::vector<PolledElement> before = std::move(polled_);
    const std::vector<Variable> known = std::move(variables_);
    polled_ = variables;
    variables_.assign(variables.size(), Variable());
    differing_ = variables.size();
    places_.clear();
    groups_.clear();
    ofThisRequest_ = 0;
    retries_.clear();
    changes_.clear();
    underWay_ = Group();
    for (size_t i = 0; i < variables.size(); ++i) {
        const auto elements = wireElements(variables[i].element, variables[i].station);
        variables_[i].elements = static_cast<int>(elements.size());
        for (const WireElement& element : elements) {
            places_.push_back({element, i});
        }
    }
    std::stable_sort(places_.begin(), places_.end(), isBefore);
    keepKnown(before, known);
}

void CulpritSearch::keepKnown(const std::vector<PolledElement>& before,
                              const std::vector<Variable>& known)
{
    std::map<Key, size_t> refused;
    for (size_t i = 0; i < known.size(); ++i) {
        if (known[i].state == State::refused) {
            refused.emplace(keyOf(before[i]), i);
        }
    }
    if (refused.empty()) {
        return;
    }
    for (size_t i = 0; i < variables_.size(); ++i) {
        const auto found = refused.find(keyOf(polled_[i]));
        if (found == refused.end()) {
            continue;
        }
        const Variable& old = known[found->second];
        Variable& variable = variables_[i];
        variable.code = old.code;
        variable.due = old.due;
        variable.pause = old.pause;
        variable.tried = old.tried;
        set(i, State::refused);
        retries_.emplace(variable.due, i);
    }
}

void CulpritSearch::set(size_t variable, State state)
{
    Variable& one = variables_[variable];
    const bool differed = (one.state == State::polled) != one.isListed;
    one.state = state;
    const bool differs = (one.state == State::polled) != one.isListed;
    differing_ += differs ? 1 : 0;
    differing_ -= differed ? 1 : 0;
}

void CulpritSearch::listGiven()
{
    for (Variable& variable : variables_) {
        variable.isListed = variable.state == State::polled;
    }
    differing_ = 0;
}

std::vector<size_t> CulpritSearch::variablesOf(const std::vector<WireElement>& elements) const
{
    std::vector<size_t> found;
    for (const WireElement& element : elements) {
        const auto range =
            std::equal_range(places_.begin(), places_.end(), Place{element, 0}, isBefore);
        for (auto place = range.first; place != range.second; ++place) {
            if (variables_[place->variable].isListed &&
                std::find(found.begin(), found.end(), place->variable) == found.end()) {
                found.push_back(place->variable);
            }
        }
    }
    return found;
}

void CulpritSearch::refused(const std::vector<WireElement>& elements, Clock::time_point now)
{
    const std::vector<size_t> asked = variablesOf(elements);
    // One that has been found and has not left the list yet explains it.
    const bool isExplained = std::any_of(asked.begin(), asked.end(), [&](size_t variable) {
        return variables_[variable].state == State::refused;
    });
    if (!isExplained) {
        suspect(asked, now);
    }
}

void CulpritSearch::suspect(const std::vector<size_t>& variables, Clock::time_point now)
{
    Group group;
    for (const size_t variable : variables) {
        const Variable& one = variables_[variable];
        if (one.state == State::polled && now >= one.due) {
            group.variables.push_back(variable);
        }
    }
    if (group.variables.empty()) {
        return;
    }
    for (const size_t variable : group.variables) {
        set(variable, State::suspected);
    }
    group.holdsOne = group.variables.size() == variables.size();
    // The latest first: its other variables have been polled until now.
    groups_.insert(groups_.begin() + ofThisRequest_, std::move(group));
}

std::vector<CulpritSearch::Refused> CulpritSearch::refusedVariables() const
{
    std::vector<Refused> list;
    for (size_t i = 0; i < variables_.size(); ++i) {
        if (variables_[i].state == State::refused) {
            list.push_back({i, variables_[i].code});
        }
    }
    return list;
}

std::vector<CulpritSearch::Change> CulpritSearch::takeChanges()
{
    std::vector<Change> changes;
    changes.swap(changes_);
    return changes;
}

bool CulpritSearch::mustBeCut(const Group& group) const
{
    if (group.variables.size() < 2 || group.wereRefused) {
        return false;
    }
    int elements = 0;
    for (const size_t variable : group.variables) {
        elements += variables_[variable].elements;
    }
    return group.holdsOne || elements > kMostElements;
}

void CulpritSearch::cutFirst()
{
    Group group = std::move(groups_.front());
    groups_.pop_front();
    const auto middle =
        group.variables.begin() + static_cast<std::ptrdiff_t>(group.variables.size() / 2);
    Group first;
    Group second;
    first.variables.assign(group.variables.begin(), middle);
    first.halfFollows = group.holdsOne;
    second.variables.assign(middle, group.variables.end());
    groups_.push_front(std::move(second));
    groups_.push_front(std::move(first));
    ++ofThisRequest_;
}

std::vector<size_t> CulpritSearch::next(Clock::time_point now)
{
    if (!underWay_.variables.empty() || now < nextAt()) {
        return {};
    }
    while (!groups_.empty()) {
        ofThisRequest_ = std::max<std::ptrdiff_t>(1, ofThisRequest_);
        if (mustBeCut(groups_.front())) {
            cutFirst();
            continue;
        }
        Group group = std::move(groups_.front());
        groups_.pop_front();
        --ofThisRequest_;
        if (group.wereRefused) {
            // Some may have been tried by themselves since.
            std::vector<size_t>& those = group.variables;
            those.erase(
                std::remove_if(those.begin(), those.end(),
                               [&](size_t one) { return variables_[one].state != State::refused; }),
                those.end());
        }
        if (!group.variables.empty()) {
            return begin(std::move(group), now);
        }
    }
    if (retries_.empty() || now < retries_.begin()->first) {
        return {};
    }
    Group again;
    again.variables.push_back(retries_.begin()->second);
    again.wereRefused = true;
    return begin(std::move(again), now);
}

std::vector<size_t> CulpritSearch::begin(Group group, Clock::time_point now)
{
    began_ = now;
    underWay_ = std::move(group);
    return underWay_.variables;
}

Clock::time_point CulpritSearch::nextAt() const
{
    if (!underWay_.variables.empty() || (groups_.empty() && retries_.empty())) {
        return Clock::time_point::max();
    }
    return groups_.empty() ? std::max(gapEnd_, retries_.begin()->first) : gapEnd_;
}

void CulpritSearch::keepGap(TryEnd end, Clock::time_point now)
{
    if (end == TryEnd::answered || answersSomething_) {
        silence_ = Clock::duration::zero();
    } else {
        silence_ = std::min<Clock::duration>(kLongestGap,
                                             std::max<Clock::duration>(kLeastGap, 2 * silence_));
    }
    answersSomething_ = end == TryEnd::answered;
    gapEnd_ = now + std::max({Clock::duration(kLeastGap), now - began_, silence_});
}

void CulpritSearch::ended(TryEnd end, quint8 code, Clock::time_point now)
{
    keepGap(end, now);
    const Group group = std::move(underWay_);
    underWay_ = Group();
    switch (end) {
    case TryEnd::answered:
        if (group.halfFollows) {
            groups_.front().holdsOne = true;
        }
        for (const size_t variable : group.variables) {
            acquit(variable, now);
        }
        if (group.wereRefused && group.variables.size() == 1) {
            tryRefusedTogether(now);
        }
        break;
    case TryEnd::refused:
        takeRefusal(group, code, now);
        break;
    case TryEnd::nothing:
        for (const size_t variable : group.variables) {
            release(variable, now);
        }
        break;
    }
}

void CulpritSearch::takeRefusal(const Group& group, quint8 code, Clock::time_point now)
{
    if (group.variables.size() == 1) {
        convict(group.variables.front(), code, now);
    } else if (group.wereRefused) {
        for (const size_t variable : group.variables) {
            variables_[variable].tried = now;
        }
    } else if (!group.variables.empty()) {
        groups_.push_front(group);
        groups_.front().holdsOne = true;
        ++ofThisRequest_;
    }
}

void CulpritSearch::convict(size_t variable, quint8 code, Clock::time_point now)
{
    Variable& one = variables_[variable];
    const bool isNew = one.state != State::refused;
    if (isNew) {
        one.pause = kFirstPause;
        changes_.push_back({variable, true, code});
    } else {
        retries_.erase({one.due, variable});
        one.pause = std::min<Clock::duration>(kLongestPause, 2 * one.pause);
    }
    set(variable, State::refused);
    one.code = code;
    one.tried = now;
    one.due = now + one.pause;
    retries_.emplace(one.due, variable);
}

void CulpritSearch::acquit(size_t variable, Clock::time_point now)
{
    Variable& one = variables_[variable];
    if (one.state == State::refused) {
        retries_.erase({one.due, variable});
        changes_.push_back({variable, false, one.code});
        one.pause = Clock::duration::zero();
        one.due = now;
    } else {
        const bool isSoon = one.pause > Clock::duration::zero() && now < one.due + one.pause;
        one.pause = isSoon ? std::min<Clock::duration>(kLongestPause, 2 * one.pause) : kFirstPause;
        one.due = now + one.pause;
    }
    set(variable, State::polled);
}

// Nothing was learnt: what is suspected is polled again, which tells.
void CulpritSearch::release(size_t variable, Clock::time_point now)
{
    Variable& one = variables_[variable];
    if (one.state != State::refused) {
        set(variable, State::polled);
        return;
    }
    retries_.erase({one.due, variable});
    one.tried = now;
    one.due = now + one.pause;
    retries_.emplace(one.due, variable);
}

// One that answers again is a sign that others do: as many as share a request are asked for at
// once, which is over with the first answer that refuses them.
void CulpritSearch::tryRefusedTogether(Clock::time_point now)
{
    const auto isTooFresh = [&](size_t variable) {
        return now < variables_[variable].tried + kFirstPause;
    };
    const Place* last = nullptr;
    int elements = 0;
    std::set<size_t> taken;
    for (const Place& place : places_) {
        const Variable& one = variables_[place.variable];
        if (one.state != State::refused || isTooFresh(place.variable) ||
            !taken.insert(place.variable).second) {
            continue;
        }
        const bool fits = last != nullptr && last->element.elements == place.element.elements &&
                          last->element.station == place.element.station &&
                          elements + one.elements <= kMostTogether;
        if (!fits) {
            groups_.emplace_back();
            groups_.back().wereRefused = true;
            elements = 0;
        }
        groups_.back().variables.push_back(place.variable);
        elements += one.elements;
        last = &place;
    }
}

} // namespace tavmir::host
