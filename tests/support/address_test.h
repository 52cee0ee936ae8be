// The fixture of tests that resolve address texts.
#ifndef TAVMIR_TESTS_SUPPORT_ADDRESS_TEST_H
#define TAVMIR_TESTS_SUPPORT_ADDRESS_TEST_H

#include "address/Func_Check.h"
#include "support/driver_test.h"
#include "support/label_tree.h"

#include <ostream>

bool operator==(const ControlInformationM& a, const ControlInformationM& b);
void PrintTo(const ControlInformationM& info, std::ostream* out);

namespace tavmir
{
namespace test
{

// A parsed address with these members set and all others zero.
ControlInformationM parsed(int dataType, int elementAddress, int elementWidth);

// The same for one bit of a word, and for an element of an array.
ControlInformationM parsedBit(int dataType, int elementAddress, int elementWidth, int bitIndex);
ControlInformationM parsedElement(int dataType, int elementAddress, int elementWidth,
                                  int arrayIndex, int elementLimit);

class AddressTest : public DriverTest
{
protected:
    // Resolves a text from a record of zeros; the record is kept in `info`.
    int resolve(const char* address);

    // The line that the parser writes, with its payload.
    static QString parserLine(const char* function, int number, const LineItem& payload);

    // The line of a refusal inside the tree, which carries no text.
    static QString treeLine(int number) { return parserLine("get_label_address_1", number, ""); }

    ControlInformationM info;
};

} // namespace test
} // namespace tavmir

#endif
