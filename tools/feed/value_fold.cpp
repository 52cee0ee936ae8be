// Replies into places, places into variables.
#include "value_fold.h"

#include "wire/frame_layout.h"

#include <algorithm>
#include <map>

namespace tavmir::host
{

namespace
{

// The bytes of one element as the driver's calls give them.
void putNumber(char* bytes, int size, quint32 number)
{
    for (int i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(number >> (8 * i) & 0xFF);
    }
}

// True when the number's change is one of the variable, which may be one of its bits.
bool concerns(const project::Element& element, quint32 before, quint32 now)
{
    return element.bitNumber ? ((before ^ now) >> *element.bitNumber & 1) != 0 : before != now;
}

} // namespace

size_t ValueFold::find(const Group& group, qint32 address)
{
    const auto found =
        std::lower_bound(group.places.begin(), group.places.end(), address,
                         [](const Slot& slot, qint32 wanted) { return slot.address < wanted; });
    return found != group.places.end() && found->address == address
               ? static_cast<size_t>(found - group.places.begin())
               : group.places.size();
}

quint32 ValueFold::groupOf(std::vector<Group>& groups, const WireElement& element)
{
    for (size_t i = 0; i < groups.size(); ++i) {
        if (groups[i].elements == element.elements && groups[i].station == element.station) {
            return static_cast<quint32>(i);
        }
    }
    groups.emplace_back();
    groups.back().elements = element.elements;
    groups.back().station = element.station;
    return static_cast<quint32>(groups.size() - 1);
}

void ValueFold::keepKnown(const std::vector<Group>& from, std::vector<Group>& to)
{
    for (const Group& old : from) {
        for (Group& group : to) {
            if (old.elements != group.elements || old.station != group.station) {
                continue;
            }
            for (Slot& slot : group.places) {
                const size_t known = find(old, slot.address);
                if (known < old.places.size()) {
                    slot = old.places[known];
                }
            }
        }
    }
}

void ValueFold::findUsers(std::vector<Group>& groups, std::vector<Variable>& folds)
{
    std::vector<std::vector<std::pair<quint32, quint32>>> pairs(groups.size());
    for (size_t variable = 0; variable < folds.size(); ++variable) {
        for (const quint32 slot : folds[variable].places) {
            pairs[folds[variable].group].emplace_back(slot, static_cast<quint32>(variable));
        }
    }
    for (size_t g = 0; g < groups.size(); ++g) {
        Group& group = groups[g];
        std::sort(pairs[g].begin(), pairs[g].end());
        group.firstUser.assign(group.places.size() + 1, 0);
        group.ofMany.assign(group.places.size(), false);
        for (const auto& [slot, variable] : pairs[g]) {
            ++group.firstUser[slot + 1];
            group.users.push_back(variable);
            if (folds[variable].places.size() > 1) {
                group.ofMany[slot] = true;
                group.hasMany = true;
            }
        }
        for (size_t slot = 0; slot < group.places.size(); ++slot) {
            group.firstUser[slot + 1] += group.firstUser[slot];
        }
    }
}

void ValueFold::keepShown(const std::vector<PolledElement>& variables,
                          std::vector<Variable>& folds) const
{
    std::map<std::pair<WireElement, size_t>, const Variable*> old;
    for (size_t i = 0; i < variables_.size(); ++i) {
        const auto parts = wireElements(variables_[i].element, variables_[i].station);
        old[{parts.front(), parts.size()}] = &folds_[i];
    }
    for (size_t i = 0; i < variables.size(); ++i) {
        const auto parts = wireElements(variables[i].element, variables[i].station);
        const auto found = old.find({parts.front(), parts.size()});
        if (found != old.end()) {
            folds[i].shown = found->second->shown;
        }
    }
}

void ValueFold::watch(const std::vector<PolledElement>& variables)
{
    plan_.reset();
    std::vector<Group> groups;
    std::vector<Variable> folds(variables.size());
    for (size_t i = 0; i < variables.size(); ++i) {
        for (const WireElement& part : wireElements(variables[i].element, variables[i].station)) {
            folds[i].group = groupOf(groups, part);
            groups[folds[i].group].places.push_back({part.address, 0, 0});
        }
    }
    for (Group& group : groups) {
        std::vector<Slot>& places = group.places;
        std::sort(places.begin(), places.end(),
                  [](const Slot& left, const Slot& right) { return left.address < right.address; });
        places.erase(std::unique(places.begin(), places.end(),
                                 [](const Slot& left, const Slot& right) {
                                     return left.address == right.address;
                                 }),
                     places.end());
    }
    for (size_t i = 0; i < variables.size(); ++i) {
        Variable& fold = folds[i];
        for (const WireElement& part : wireElements(variables[i].element, variables[i].station)) {
            fold.places.push_back(static_cast<quint32>(find(groups[fold.group], part.address)));
        }
        fold.came.assign(fold.places.size(), false);
        fold.missing = fold.places.size();
    }
    findUsers(groups, folds);
    keepKnown(groups_, groups);
    keepShown(variables, folds);
    singles_.clear();
    for (size_t i = 0; i < variables.size(); ++i) {
        singles_.push_back(singleOf(folds[i], variables[i].element));
    }
    variables_ = variables;
    groups_ = std::move(groups);
    folds_ = std::move(folds);
}

ValueFold::Single ValueFold::singleOf(const Variable& fold, const project::Element& element)
{
    Single single;
    single.isOne = fold.places.size() == 1;
    single.group = fold.group;
    single.place = fold.places.front();
    single.bit = static_cast<qint8>(element.bitNumber.value_or(-1));
    return single;
}

void ValueFold::take(const FeedEntry& entry, const Changed& changed)
{
    qualities_.take(entry);
    if (entry.kind == FeedKind::planChanged) {
        if (entry.plan != plan_) { // it is told again behind what was missed
            watch(entry.plan->polled);
            plan_ = entry.plan;
        }
        return;
    }
    if (entry.kind != FeedKind::exchange || !entry.exchange.isGood()) {
        return;
    }
    changed_.clear();
    takeReply(entry.exchange, static_cast<bool>(changed));
    if (!changed) {
        return;
    }
    for (auto variable = changed_.begin(); variable != changed_.end(); ++variable) {
        // A reply may name an element twice.
        if (std::find(changed_.begin(), variable, *variable) == variable) {
            changed(*variable);
        }
    }
}

void ValueFold::takeReply(const Exchange& exchange, bool changesWanted)
{
    const wire::FunctionCode* function =
        wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    if (function == nullptr || function->write) {
        return;
    }
    const quint8 station = exchange.request[wire::kStationOffset];
    const auto group = std::find_if(groups_.begin(), groups_.end(), [&](const Group& one) {
        return one.elements == function->elements && one.station == station;
    });
    if (group == groups_.end()) {
        return;
    }
    switch (group->elements) {
    case ElementClass::bits:
        takeEntries<1>(*group, exchange, changesWanted);
        break;
    case ElementClass::words:
        takeEntries<2>(*group, exchange, changesWanted);
        break;
    case ElementClass::doubleWords:
        takeEntries<4>(*group, exchange, changesWanted);
        break;
    }
}

// Millions a second go through here: neighbours in the request are neighbours in the places, from
// one request to the next, so hardly any is searched, and what nobody wants to know is not looked
// at.
template <size_t ValueBytes>
void ValueFold::takeEntries(Group& group, const Exchange& exchange, bool changesWanted)
{
    constexpr size_t kEntryBytes = wire::kAddressBytes + ValueBytes;
    const Clock::rep at = exchange.endedAt.time_since_epoch().count();
    const bool looksAtUsers = changesWanted || group.hasMany;
    const unsigned char* entry = exchange.reply + wire::kHeaderBytes;
    Slot* const places = group.places.data();
    const size_t end = group.places.size();
    size_t slot = group.latest;
    for (size_t left = (exchange.replyKept() - wire::kHeaderBytes) / kEntryBytes; left > 0;
         --left, entry += kEntryBytes) {
        const auto address = static_cast<qint32>(wire::bigEndian32(entry));
        ++slot;
        if (slot >= end || places[slot].address != address) {
            slot = find(group, address);
            if (slot == end) {
                continue;
            }
        }
        const bool wasKnown = places[slot].readAt != 0;
        const quint32 before = places[slot].number;
        places[slot].number = wire::bigEndianNumber(entry + wire::kAddressBytes, ValueBytes);
        places[slot].readAt = at;
        if (looksAtUsers && (!wasKnown || before != places[slot].number || group.ofMany[slot])) {
            slotCame(group, slot, wasKnown, before);
        }
    }
    group.latest = slot;
}

void ValueFold::slotCame(const Group& group, size_t slot, bool wasKnown, quint32 before)
{
    for (quint32 i = group.firstUser[slot]; i < group.firstUser[slot + 1]; ++i) {
        const quint32 variable = group.users[i];
        if (folds_[variable].places.size() > 1) {
            partCame(variable, slot);
        } else if (!wasKnown ||
                   concerns(variables_[variable].element, before, group.places[slot].number)) {
            changed_.push_back(variable);
        }
    }
}

void ValueFold::partCame(quint32 variable, size_t slot)
{
    Variable& fold = folds_[variable];
    const auto found = std::find(fold.places.begin(), fold.places.end(), slot);
    const auto part = static_cast<size_t>(found - fold.places.begin());
    if (!fold.came[part]) {
        fold.came[part] = true;
        --fold.missing;
    }
    if (fold.missing > 0) {
        return;
    }
    const QByteArray bytes = bytesOf(fold);
    if (!fold.shown.readAt || bytes != fold.shown.bytes) {
        changed_.push_back(variable);
    }
    fold.shown = {bytes, oldestOf(fold)};
    fold.came.assign(fold.places.size(), false);
    fold.missing = fold.places.size();
}

QByteArray ValueFold::bytesOf(const Variable& fold) const
{
    const Group& group = groups_[fold.group];
    const int size = valueBytesOf(group.elements);
    QByteArray bytes(static_cast<int>(fold.places.size()) * size, Qt::Uninitialized);
    char* place = bytes.data();
    for (const quint32 slot : fold.places) {
        putNumber(place, size, group.places[slot].number);
        place += size;
    }
    return bytes;
}

Clock::time_point ValueFold::oldestOf(const Variable& fold) const
{
    const Group& group = groups_[fold.group];
    Clock::rep oldest = group.places[fold.places.front()].readAt;
    for (const quint32 slot : fold.places) {
        oldest = std::min(oldest, group.places[slot].readAt);
    }
    return Clock::time_point(Clock::duration(oldest));
}

std::optional<Clock::time_point> ValueFold::readAt(size_t variable) const
{
    const Single& single = singles_[variable];
    if (!single.isOne) {
        return folds_[variable].shown.readAt;
    }
    const Clock::rep at = slotOf(single).readAt;
    return at == 0 ? std::nullopt : std::make_optional(Clock::time_point(Clock::duration(at)));
}

FoldedValue ValueFold::value(size_t variable) const
{
    const Variable& fold = folds_[variable];
    if (fold.places.size() > 1) {
        return fold.shown;
    }
    const std::optional<Clock::time_point> at = readAt(variable);
    return at ? FoldedValue{valueBytes(variables_[variable].element, bytesOf(fold)), at}
              : FoldedValue();
}

std::optional<quint32> ValueFold::number(size_t variable) const
{
    const Single& single = singles_[variable];
    if (!single.isOne || slotOf(single).readAt == 0) {
        return std::nullopt;
    }
    const quint32 number = slotOf(single).number;
    return single.bit < 0 ? number : number >> single.bit & 1;
}

size_t ValueFold::missingParts(size_t variable) const
{
    const Variable& fold = folds_[variable];
    if (fold.places.size() > 1) {
        return fold.missing;
    }
    return readAt(variable) ? 0 : 1;
}

std::vector<ReadPlace> ValueFold::placesOf(const Variable& fold) const
{
    const Group& group = groups_[fold.group];
    std::vector<ReadPlace> places;
    for (const quint32 place : fold.places) {
        const Slot& slot = group.places[place];
        places.push_back({{group.elements, slot.address, group.station}, slot.readAt});
    }
    return places;
}

ValueQuality ValueFold::quality(size_t variable, Clock::time_point now) const
{
    const auto places =
        qualities_.isUntroubled() ? std::vector<ReadPlace>() : placesOf(folds_[variable]);
    return qualities_.of(variable, places, readAt(variable), now);
}

} // namespace tavmir::host
