// Values and ages of the polled variables, folded out of the feed: every value is one that a
// reply brought, never one out of the driver's caches, which take a written value before the
// controller has acknowledged it. One thread.
//
// Known by station, class and address, so it does not matter which request brought a value: a
// one-shot read refreshes it as polling does. A variable of several elements, a text, is shown
// when it is whole: when each of its elements has come since it was shown last. How far each can
// be trusted, quality_fold.h says.
#ifndef TAVMIR_FEED_VALUE_FOLD_H
#define TAVMIR_FEED_VALUE_FOLD_H

#include "feed_entry.h"
#include "quality_fold.h"

#include <functional>
#include <optional>
#include <vector>

namespace tavmir::host
{

// What is known of one variable.
struct FoldedValue {
    QByteArray bytes; // as the driver's calls give them; empty when never whole
    // When the oldest of its elements was read; none: never whole.
    std::optional<Clock::time_point> readAt;
};

class ValueFold
{
public:
    explicit ValueFold(const QualityRules& rules = QualityRules()) : qualities_(rules) {}

    // The variables from now on. What is known of elements that were asked for before is kept.
    void watch(const std::vector<PolledElement>& variables);

    // Called for each variable whose value is another one now, or the first, with its place in
    // variables(), when the whole reply that brought it has been taken.
    using Changed = std::function<void(size_t variable)>;

    // Takes a plan of the feed as the variables to watch, and values out of replies.
    void take(const FeedEntry& entry, const Changed& changed = Changed());

    // Entries were missed here.
    void gap() { qualities_.gap(); }

    const std::vector<PolledElement>& variables() const { return variables_; }
    FoldedValue value(size_t variable) const;
    // The value of a variable of one element as a number, a bit's as 0 or 1, for who looks at very
    // many; none: it was never read, or has several elements.
    std::optional<quint32> number(size_t variable) const;
    ValueQuality quality(size_t variable, Clock::time_point now) const;
    // When the oldest part of what is shown was read; none: nothing is shown.
    std::optional<Clock::time_point> readAt(size_t variable) const;
    // Its elements on the wire, and how many of them have not come since it was shown last; of a
    // variable of one element none or all.
    size_t parts(size_t variable) const { return folds_[variable].places.size(); }
    size_t missingParts(size_t variable) const;

    const LineHealth& line() const { return qualities_.line(); }

private:
    // One element on the wire and what the last reply said of it. Small: a pass goes over all.
    struct Slot {
        qint32 address = 0;
        quint32 number = 0;
        Clock::rep readAt = 0; // 0: never
    };
    // The places of one class at one station, ascending by address.
    struct Group {
        ElementClass elements = ElementClass::bits;
        quint8 station = 0;
        std::vector<Slot> places;
        std::vector<quint32> firstUser; // of each slot, and the end of the last one's
        std::vector<quint32> users;     // variables
        std::vector<bool> ofMany;       // the slot is part of a variable of several elements
        bool hasMany = false;           // some slot is
        size_t latest = 0;              // that a reply brought: the next reply goes on behind it
    };
    struct Variable {
        quint32 group = 0;
        std::vector<quint32> places;
        // Of a variable of several elements:
        std::vector<bool> came; // since it was shown last
        size_t missing = 0;
        FoldedValue shown;
    };
    // What who looks at all variables needs of each: small, in one piece of memory.
    struct Single {
        quint32 group = 0;
        quint32 place = 0;
        qint8 bit = -1;     // of the element; -1: all of it
        bool isOne = false; // the variable has one element
    };

    static size_t find(const Group& group, qint32 address); // the number of places: not there
    static quint32 groupOf(std::vector<Group>& groups, const WireElement& element);
    static void keepKnown(const std::vector<Group>& from, std::vector<Group>& to);
    static Single singleOf(const Variable& fold, const project::Element& element);
    static void findUsers(std::vector<Group>& groups, std::vector<Variable>& folds);
    void keepShown(const std::vector<PolledElement>& variables, std::vector<Variable>& folds) const;

    void takeReply(const Exchange& exchange, bool changesWanted);
    template <size_t ValueBytes>
    void takeEntries(Group& group, const Exchange& exchange, bool changesWanted);
    void slotCame(const Group& group, size_t slot, bool wasKnown, quint32 before);
    void partCame(quint32 variable, size_t slot);
    QByteArray bytesOf(const Variable& fold) const;
    Clock::time_point oldestOf(const Variable& fold) const;
    std::vector<ReadPlace> placesOf(const Variable& fold) const;
    const Slot& slotOf(const Single& single) const
    {
        return groups_[single.group].places[single.place];
    }

    std::shared_ptr<const PolledGeneration> plan_; // null: they were given otherwise
    std::vector<PolledElement> variables_;
    std::vector<Variable> folds_;
    std::vector<Single> singles_; // by variable
    std::vector<Group> groups_;
    QualityFold qualities_;
    std::vector<quint32> changed_; // by the reply that is being taken
};

} // namespace tavmir::host

#endif
