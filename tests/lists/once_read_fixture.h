// The fixture of the one-shot read tests: a label P with variables of every kind.
#ifndef TAVMIR_TESTS_LISTS_ONCE_READ_FIXTURE_H
#define TAVMIR_TESTS_LISTS_ONCE_READ_FIXTURE_H

#include "support/driver_test.h"
#include "support/label_tree.h"
#include "support/records.h"

namespace tavmir
{
namespace test
{

typedef std::vector<int> Addresses;

class OnceRead : public DriverTest
{
protected:
    OnceRead()
    {
        const QList<int> upTo3 = QList<int>() << 0 << 3;
        const QList<int> upTo10 = QList<int>() << 0 << 10;
        QList<Label_Type_Info> variables;
        variables << variable("B", 1, 100) << arrayVariable("Bs", 1, 200, upTo3)
                  << variable("W", 4, 1000) << arrayVariable("Ws", 4, 2000, upTo3)
                  << variable("D", 6, 3000) << arrayVariable("Ds", 6, 4000, upTo10)
                  << variable("U", 7, 5000) << arrayVariable("Us", 7, 6000, upTo10)
                  << textVariable("T", 7000, 8) << variable("T0", 10, 7500)
                  << textVariable("TNegative", 7600, -1);
        Label_Type_Info texts = arrayVariable("Ts", 10, 8000, upTo3);
        texts.elementSizes << 8;
        variables << texts;
        Label_Type_Info empty = arrayVariable("Empty", 4, 9000, QList<int>() << 5 << 5);
        Label_Type_Info reversed = arrayVariable("Reversed", 4, 9500, QList<int>() << 5 << 3);
        variables << empty << reversed;
        for (const int code : {0, 2, 3, 5, 8, 9, 11, 12}) {
            variables << variable(qPrintable(QString("X%1").arg(code)), code, 9900);
        }
        passLabels({label("P", variables)});
    }

    static RW_VAR request(const char* address, int count)
    {
        RW_VAR var;
        var.addressText = QString::fromUtf8(address);
        var.count = count;
        var.station = 3;
        var.hostKey = 11;
        var.varKey = 12;
        return var;
    }

    // Registers on an empty list and returns the addresses that were queued.
    std::vector<int> queued(const char* address, int count)
    {
        PLC_driver.onceReadList.clear();
        RW_VAR var = request(address, count);
        const int result = AddListOnceReadVar(&var);
        EXPECT_EQ(result, PLC_driver.onceReadList.size());
        return addressesOf(PLC_driver.onceReadList);
    }
};

} // namespace test
} // namespace tavmir

#endif
