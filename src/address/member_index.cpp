#include "address/member_index.h"

#include <unordered_set>

namespace tavmir
{

namespace
{

// Shorter lists are searched as fast as they are looked up.
const int kIndexedFrom = 9;

// Takes four characters at a time; equal texts have equal hashes, nothing more is asked of it.
quint32 hashOf(const TextPiece& name)
{
    const quint64 kFactor = Q_UINT64_C(0x9E3779B97F4A7C15);
    quint64 hash = static_cast<quint64>(name.size);
    const QChar* at = name.text;
    int left = name.size;
    for (; left >= 4; left -= 4, at += 4) {
        quint64 four;
        std::memcpy(&four, at, sizeof four);
        hash = (hash ^ four) * kFactor;
        hash ^= hash >> 32;
    }
    for (; left > 0; --left, ++at) {
        hash = (hash ^ at->unicode()) * kFactor;
        hash ^= hash >> 32;
    }
    return static_cast<quint32>(hash);
}

// Whether there is anything to index below a record.
bool hasRecordsBelow(const Label_Type_Info& record)
{
    return !record.members.isEmpty() || !record.elementType.isEmpty();
}

} // namespace

IndexedList::IndexedList(const QList<Label_Type_Info>& members) : members_(members)
{
    std::size_t slotCount = 1;
    while (slotCount < 2 * static_cast<std::size_t>(members.size())) {
        slotCount *= 2;
    }
    const Slot free = {0, -1, nullptr};
    slots_.assign(slotCount, free);
    for (int i = 0; i < members_.size(); ++i) {
        const TextPiece name = pieceOf(members_.at(i).name);
        const quint32 hash = hashOf(name);
        Slot& slot = slots_[slotOf(name, hash)];
        if (slot.place >= 0) {
            continue; // the first of equal names counts
        }
        slot.hash = hash;
        slot.place = i;
        slot.record = &members_.at(i);
    }
}

std::size_t IndexedList::slotOf(const TextPiece& name, quint32 hash) const
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].place >= 0 && !(slots_[at].hash == hash && slots_[at].record->name == name)) {
        at = (at + 1) & mask;
    }
    return at;
}

int IndexedList::find(const TextPiece& name) const
{
    return slots_[slotOf(name, hashOf(name))].place;
}

void MemberIndex::add(const Label_Type_Info& root)
{
    std::unordered_set<const Label_Type_Info*> seen;
    std::vector<const Label_Type_Info*> waiting(1, &root);
    while (!waiting.empty()) {
        const Label_Type_Info& record = *waiting.back();
        waiting.pop_back();

        if (!record.elementType.isEmpty() && seen.insert(&record.elementType.first()).second) {
            waiting.push_back(&record.elementType.first());
        }

        const QList<Label_Type_Info>& members = record.members;
        if (members.isEmpty() || !seen.insert(&members.first()).second ||
            lists_.count(&members.first()) != 0) {
            continue;
        }
        if (members.size() >= kIndexedFrom) {
            lists_.emplace(&members.first(), IndexedList(members));
        }
        for (QList<Label_Type_Info>::const_iterator it = members.begin(); it != members.end();
             ++it) {
            if (hasRecordsBelow(*it)) {
                waiting.push_back(&*it);
            }
        }
    }
}

void MemberIndex::dropUnused()
{
    // A list that goes may have been the last to hold another.
    bool dropped = true;
    while (dropped) {
        dropped = false;
        for (Lists::iterator it = lists_.begin(); it != lists_.end();) {
            if (!it->second.isAlone()) {
                ++it;
                continue;
            }
            it = lists_.erase(it);
            dropped = true;
        }
    }
}

int MemberIndex::find(const QList<Label_Type_Info>& members, const TextPiece& name) const
{
    if (members.size() < kIndexedFrom) {
        return kNotIndexed;
    }
    const Lists::const_iterator list = lists_.find(&members.first());
    return list == lists_.end() ? static_cast<int>(kNotIndexed) : list->second.find(name);
}

} // namespace tavmir
