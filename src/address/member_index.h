// Finding a name in a long list of members without searching the list. Private.
#ifndef TAVMIR_ADDRESS_MEMBER_INDEX_H
#define TAVMIR_ADDRESS_MEMBER_INDEX_H

#include "address/address_parts.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <unordered_map>
#include <vector>

namespace tavmir
{

// Places of the names in one list. It shares the list, so the list and its records stay what
// and where they are for as long as the index lives: whoever changes a record's list from then
// on changes a copy.
class IndexedList
{
public:
    explicit IndexedList(const QList<Label_Type_Info>& members);

    // The first place of the name, or -1.
    int find(const TextPiece& name) const;

    // True when nobody else uses the list any more.
    bool isAlone() const { return members_.isDetached(); }

private:
    struct Slot {
        quint32 hash;
        qint32 place;                  // -1: free
        const Label_Type_Info* record; // at that place: saves a look into the list
    };

    // Where the name's slot is, or where it would go.
    std::size_t slotOf(const TextPiece& name, quint32 hash) const;

    QList<Label_Type_Info> members_;
    std::vector<Slot> slots_; // a power of two of them, at least half of them free
};

// The indexed lists of all label records. Reading: any thread, no lock; not beside `add` and
// `dropUnused`, which belong to set-up.
class MemberIndex
{
public:
    enum { kNotIndexed = -2, kNoSuchName = -1 };

    // Indexes each long list of members in the tree below `root`, a list that several records
    // share once.
    void add(const Label_Type_Info& root);

    // Forgets lists that are in no record any more.
    void dropUnused();

    // The first place of the name in the list, kNoSuchName, or kNotIndexed for a list that is
    // not one of those seen by `add`, in which the caller has to search.
    int find(const QList<Label_Type_Info>& members, const TextPiece& name) const;

private:
    typedef std::unordered_map<const Label_Type_Info*, IndexedList> Lists;

    // By the list's first record: lists that are not one and the same have different ones.
    Lists lists_;
};

} // namespace tavmir

#endif
