#include "support/exchange_test.h"

#include "support/label_tree.h"

namespace tavmir
{
namespace test
{

ExchangeTest::ExchangeTest()
{
    const QList<int> upTo10 = QList<int>() << 0 << 10;
    QList<Label_Type_Info> variables;
    variables << variable("B", 1, 100) << arrayVariable("Bs", 1, 10000, upTo10)
              << variable("W", 4 | kBitSuffix, 1000)
              << arrayVariable("Ws", 4 | kBitSuffix, 0, upTo10)
              << variable("D", 6 | kBitSuffix, 2000)
              << arrayVariable("Ds", 6 | kBitSuffix, 20000, upTo10) << variable("U", 7, 3000)
              << arrayVariable("Us", 7, 30000, upTo10) << textVariable("T", 4000, 48)
              << variable("Bit", 1 | kBitSuffix, 5000);
    Label_Type_Info texts = arrayVariable("Ts", 10, 40000, upTo10);
    texts.elementSizes << 48;
    variables << texts;
    for (const int code : {0, 2, 3, 5, 8, 9, 11}) {
        variables << variable(qPrintable(QString("X%1").arg(code)), code, 6000);
    }
    variables << structureVariable("S", 7000, structureType(QList<Label_Type_Info>()));
    passLabels({label("P", variables)});
}

QByteArray ExchangeTest::read(const char* address, int count, int result)
{
    QByteArray data("what was there before");
    EXPECT_EQ(GetRegisterData(QString::fromUtf8(address), 0, 0, 0, &data, count), result)
        << address;
    return data;
}

int ExchangeTest::write(const char* address, const QByteArray& data, int count)
{
    QByteArray bytes = data;
    const int result =
        SetRegisterData(QString::fromUtf8(address), 0, "aux", 3, &bytes, count, 11, 12);
    EXPECT_EQ(bytes, data) << "the host's bytes are read, not changed";
    return result;
}

} // namespace test
} // namespace tavmir
