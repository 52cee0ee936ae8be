#include "support/cycle_test.h"

namespace tavmir
{
namespace test
{

namespace
{

QByteArray zerosFor(int dataType)
{
    const int bytes = PLC_driver.get_data_type_size(dataType) - 4;
    return QByteArray(bytes, '\0');
}

} // namespace

void CycleTest::queueWrite(int dataType, int address, int hostKey, int varKey)
{
    PLC_driver.writeVarList.append(writeOf(dataType, address, zerosFor(dataType), hostKey, varKey));
}

void CycleTest::queueOnce(int dataType, int address, int hostKey, int varKey)
{
    RW_VAR var = element(dataType, address);
    var.hostKey = hostKey;
    var.varKey = varKey;
    PLC_driver.onceReadList.append(var);
}

void CycleTest::poll(int dataType, int address, int hostKey, int varKey)
{
    RW_VAR var = element(dataType, address);
    var.hostKey = hostKey;
    var.varKey = varKey;
    PLC_driver.readVarList.append(var);
}

void CycleTest::queueWrites(int number, int dataType)
{
    for (int i = 0; i < number; ++i) {
        queueWrite(dataType, 32 * i, i, i);
    }
}

void CycleTest::queueOnces(int number, int dataType)
{
    for (int i = 0; i < number; ++i) {
        queueOnce(dataType, 32 * i, i, i);
    }
}

void CycleTest::pollMany(int number, int dataType)
{
    for (int i = 0; i < number; ++i) {
        poll(dataType, 32 * i, i, i);
    }
}

int CycleTest::answer()
{
    QByteArray reply(PLC_driver.protocolList.first().replyLength, '\0');
    return DataCom(&reply, reply.size())->status;
}

int CycleTest::answerNothing()
{
    QByteArray nothing;
    return DataCom(&nothing, 0)->status;
}

char CycleTest::turn()
{
    if (ComCommunication() == nullptr) {
        return '-';
    }
    const qint32 state = PLC_driver.cycleState;
    answer();
    if (state == 0) {
        return 'p';
    }
    return state == 1 ? 'w' : 'o';
}

std::string CycleTest::turns(int number)
{
    std::string letters;
    for (int i = 0; i < number; ++i) {
        letters += turn();
    }
    return letters;
}

} // namespace test
} // namespace tavmir
