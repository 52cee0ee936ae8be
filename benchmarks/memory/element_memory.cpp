// Prints the heap bytes that one polled element takes: its entry in the polled list and its value
// in a cache, after the list has turned round several times. Texts are shared and left out.
#include "support/allocation_counter.h"
#include "support/plant.h"
#include "support/quiet_messages.h"

#include <cstdio>

namespace
{

using namespace tavmir::bench;

long bytesPerElement(int type, int elements)
{
    resetDriver();
    const long before = heapBytesInUse();
    {
        // One variable: all of its elements share their texts.
        QList<Label_Type_Info> labels;
        labels << label("Main", QList<Label_Type_Info>()
                                    << arrayVariable("Recipe", type, 0, elements));
        PassVarName_2(&labels);
        HOSTVAR var;
        var.addressText = "Main.Recipe[0]";
        var.count = type == kDoubleWord ? 2 * elements : elements;
        QList<HOSTVAR> vars;
        vars << var;
        ReCreatReadVarList(&vars);
    }
    for (int covered = 0; covered < 5 * elements; covered += PLC_driver.batchCount) {
        goodTurn();
    }
    const long bytes = heapBytesInUse() - before;
    resetDriver();
    return bytes / elements;
}

} // namespace

int main()
{
    const int kElements = 100000;
    discardMessages();
    std::printf("bit %ld\n", bytesPerElement(kBit, kElements));
    std::printf("word %ld\n", bytesPerElement(kWord, kElements));
    std::printf("dword %ld\n", bytesPerElement(kDoubleWord, kElements));
    return 0;
}
