#include "lists/rotation.h"

namespace tavmir
{

namespace
{

// QList moves its first entry to the end by letting its window of entry pointers slide one
// slot, but only while there is a free slot behind the window; without one it shifts every
// pointer. The window's start tells which of the two it did.
bool moveFirstToEnd(QList<RW_VAR>& list)
{
    const QList<RW_VAR>::const_iterator start = list.constBegin();
    list.move(0, list.size() - 1);
    return list.constBegin() != start;
}

// Appending makes QList take the window back to the start of its memory, once that has more than
// three slots an entry; so it gets them first, and no more than it needs.
void makeRoomBehind(QList<RW_VAR>& list)
{
    list.reserve(3 * list.size() + 3);
    list.append(RW_VAR());
    list.removeLast();
}

// Below this length QList shifts pointers in any case.
const int kShortList = 3;

} // namespace

void rotate(QList<RW_VAR>& list, int elements)
{
    const int size = list.size();
    if (size < 2) {
        return;
    }
    for (int i = elements % size; i > 0; --i) {
        if (!moveFirstToEnd(list) && size >= kShortList) {
            makeRoomBehind(list);
        }
    }
}

} // namespace tavmir
