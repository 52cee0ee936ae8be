// The fixture of tests of the host's get and set calls: a label P with variables of every kind,
// and the calls with their unused arguments filled in.
#ifndef TAVMIR_TESTS_SUPPORT_EXCHANGE_TEST_H
#define TAVMIR_TESTS_SUPPORT_EXCHANGE_TEST_H

#include "support/driver_test.h"
#include "support/records.h"

namespace tavmir
{
namespace test
{

// Variables of the label P, by type: B bits, W words, D and U double words (6 and 7), T texts.
// A name alone is a single variable; with an s it is an array that is indexed from 0 and has a
// limit of 10. Single ones lie at 100, 1000, 2000, 3000, 4000; arrays begin at 10000, 0, 20000,
// 30000, 40000. W, D, Ws and Ds may carry a bit suffix. Texts are 48 bits wide. Bit is a bit
// with the suffix flag; X0, X2, X3, X5, X8, X9, X11 and S have types without value.
class ExchangeTest : public DriverTest
{
protected:
    ExchangeTest();

    // What is read, after the result was checked to be `result`.
    QByteArray read(const char* address, int count, int result = 1);

    // The result of a write with station 3, aux text "aux", host key 11 and var key 12.
    int write(const char* address, const QByteArray& data, int count);
};

} // namespace test
} // namespace tavmir

#endif
