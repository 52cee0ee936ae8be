// The elements of one data-type class while the polled list is rebuilt. Private.
#ifndef TAVMIR_LISTS_CLASS_ELEMENTS_H
#define TAVMIR_LISTS_CLASS_ELEMENTS_H

#include <QtCore/QtGlobal>

#include <vector>

namespace tavmir
{

// Which record of the host wants which address. Of several that want the same one the last
// counts.
class ClassElements
{
public:
    struct Element {
        qint32 address;
        qint32 record;
    };

    ClassElements() : compactAt_(0) {}

    // Adds `count` addresses from `address` on, `step` apart; none for a count below 1.
    // Records come in the order in which they count: no `record` is below one before.
    void add(qint32 record, qint32 address, qint32 step, qint32 count);

    // The elements in ascending order of their addresses, one an address.
    const std::vector<Element>& inOrder();

private:
    void compact();

    std::vector<Element> elements_;
    std::size_t compactAt_; // elements at which duplicates are looked for
};

} // namespace tavmir

#endif
