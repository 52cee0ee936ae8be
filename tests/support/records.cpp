#include "support/records.h"

namespace tavmir
{
namespace test
{

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(QByteArray(digits));
}

RW_VAR element(int dataType, int elementAddress, int station)
{
    RW_VAR var;
    var.dataType = dataType;
    var.elementAddress = elementAddress;
    var.station = station;
    var.count = 1;
    return var;
}

RW_VAR writeOf(int dataType, int elementAddress, const QByteArray& value, int hostKey, int varKey)
{
    RW_VAR var = element(dataType, elementAddress);
    var.hostData2 = 1;
    var.hostKey = hostKey;
    var.varKey = varKey;
    var.value = value;
    return var;
}

HOSTVAR hostVar(const char* address, int count, int station, const char* auxText)
{
    HOSTVAR var;
    var.addressText = QString::fromUtf8(address);
    var.auxText = QString::fromUtf8(auxText);
    var.count = count;
    var.station = static_cast<quint8>(station);
    return var;
}

void makeBatch(std::vector<RW_VAR>& elements)
{
    PLC_driver.batchCount = static_cast<qint32>(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        PLC_driver.batchElements[i] = &elements[i];
    }
}

std::vector<int> addressesOf(const QList<RW_VAR>& list)
{
    std::vector<int> addresses;
    for (const RW_VAR& var : list) {
        addresses.push_back(var.elementAddress);
    }
    return addresses;
}

QByteArray readReply(int valueBytes, const std::vector<unsigned int>& values)
{
    QByteArray reply = hex("A1 A2 A3 A4 A5 A6 A7 A8 A9");
    for (const unsigned int value : values) {
        reply += hex("B1 B2 B3 B4");
        for (int byte = valueBytes - 1; byte >= 0; --byte) {
            reply += static_cast<char>((value >> (8 * byte)) & 0xFFU);
        }
    }
    return reply;
}

bool sameRecord(const RW_VAR& a, const RW_VAR& b)
{
    return a.hostKey == b.hostKey && a.varKey == b.varKey && a.hostData2 == b.hostData2 &&
           a.hostData3 == b.hostData3 && a.hostData4 == b.hostData4 && a.status == b.status &&
           a.addressText == b.addressText && a.auxText == b.auxText && a.dataType == b.dataType &&
           a.elementAddress == b.elementAddress && a.station == b.station && a.count == b.count &&
           a.hostData12 == b.hostData12 && a.hostData13 == b.hostData13 && a.value == b.value;
}

} // namespace test
} // namespace tavmir
