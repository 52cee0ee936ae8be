// The one table of what a data type is. Private.
#ifndef TAVMIR_CORE_DATA_TYPES_H
#define TAVMIR_CORE_DATA_TYPES_H

namespace tavmir
{

// Data type codes as they stand in records and label trees.
enum DataTypeCode {
    kBitType = 1,
    kWordType = 4,
    kDoubleWordType = 6,
    kDoubleWordType7 = 7, // a second double word type: no bit suffix
    kTextType = 10,       // text, handled as words
    kStructureType = 12   // address parsing only
};

// Types of one class share a value cache, a place in the polled order and a frame layout.
enum ElementClass { kBits, kWords, kDoubleWords };

struct DataType {
    ElementClass elementClass;
    unsigned char readFunction;
    unsigned char writeFunction;
    int valueBytes; // bytes of one value in caches, write records and frames
};

const int kTextStep = 16; // bits from one word of a text to the next

const int kAddressBytes = 4; // bytes of an element address in frames and replies

// The type of a code, or null when the code can be neither read nor written.
const DataType* findDataType(int code);

} // namespace tavmir

#endif
