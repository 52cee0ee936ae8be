#include "support/address_test.h"

bool operator==(const ControlInformationM& a, const ControlInformationM& b)
{
    return a.dataType == b.dataType && a.elementAddress == b.elementAddress &&
           a.elementWidth == b.elementWidth && a.bitAccess == b.bitAccess &&
           a.bitIndex == b.bitIndex && a.isArrayElement == b.isArrayElement &&
           a.arrayBase == b.arrayBase && a.arrayIndex == b.arrayIndex &&
           a.elementLimit == b.elementLimit;
}

void PrintTo(const ControlInformationM& info, std::ostream* out)
{
    *out << "{dataType " << int(info.dataType) << ", elementAddress " << info.elementAddress
         << ", elementWidth " << info.elementWidth << ", bitAccess " << info.bitAccess
         << ", bitIndex " << info.bitIndex << ", isArrayElement " << info.isArrayElement
         << ", arrayBase " << info.arrayBase << ", arrayIndex " << info.arrayIndex
         << ", elementLimit " << info.elementLimit << '}';
}

namespace tavmir
{
namespace test
{

ControlInformationM parsed(int dataType, int elementAddress, int elementWidth)
{
    ControlInformationM info;
    info.dataType = static_cast<quint8>(dataType);
    info.elementAddress = elementAddress;
    info.elementWidth = elementWidth;
    return info;
}

ControlInformationM parsedBit(int dataType, int elementAddress, int elementWidth, int bitIndex)
{
    ControlInformationM info = parsed(dataType, elementAddress, elementWidth);
    info.bitAccess = 1;
    info.bitIndex = bitIndex;
    return info;
}

ControlInformationM parsedElement(int dataType, int elementAddress, int elementWidth,
                                  int arrayIndex, int elementLimit)
{
    ControlInformationM info = parsed(dataType, elementAddress, elementWidth);
    info.isArrayElement = 1;
    info.arrayIndex = arrayIndex;
    info.elementLimit = elementLimit;
    return info;
}

int AddressTest::resolve(const char* address)
{
    info = ControlInformationM();
    return get_label_address_info(QString::fromUtf8(address), info);
}

QString AddressTest::parserLine(const char* function, int number, const LineItem& payload)
{
    return expectedLine({"Func_Check", " ", quoted(function), " ", number, "ERROR ", payload});
}

} // namespace test
} // namespace tavmir
