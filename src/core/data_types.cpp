#include "core/data_types.h"

namespace tavmir
{

namespace
{

//                             class         read write bytes
const DataType kBit = {kBits, 'd', 'e', 1};
const DataType kWord = {kWords, 'f', 'g', 2};
const DataType kDoubleWord = {kDoubleWords, 'l', 'm', 4};

} // namespace

const DataType* findDataType(int code)
{
    switch (code) {
    case kBitType:
        return &kBit;
    case kWordType:
    case kTextType:
        return &kWord;
    case kDoubleWordType:
    case kDoubleWordType7:
        return &kDoubleWord;
    default:
        return nullptr;
    }
}

} // namespace tavmir
