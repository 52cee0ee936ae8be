#include "support/plant.h"

#include <cstring>

namespace tavmir
{
namespace bench
{

namespace
{

// More than the longest reply.
const int kReplyBytes = 512;

ComInfo connection;
unsigned long varDoneCalls = 0;
unsigned long commFailCalls = 0;

int varDone(int, int, int, int)
{
    ++varDoneCalls;
    return 0;
}

int commFail(QList<RW_VAR>, int, int)
{
    ++commFailCalls;
    return 0;
}

} // namespace

void passMixedPlant()
{
    Label_Type_Info axis = arrayVariable("Axis", kStructure, 100000, 16);
    axis.elementSizes << 96;
    axis.elementType << structureType(QList<Label_Type_Info>()
                                      << variable("Position", kDoubleWord, 0)
                                      << variable("Velocity", kDoubleWord, 32));
    QList<Label_Type_Info> labels;
    labels << label("Main", QList<Label_Type_Info>()
                                << variable("Speed", kWord, 16)
                                << variable("State", kWord | kBitSuffix, 32)
                                << arrayVariable("Recipe", kWord, 1600, kArrayElements) << axis);
    PassVarName_2(&labels);
}

void passPlant(int count, int typeFlags)
{
    QList<Label_Type_Info> labels;
    labels << label("Main", variables(count, typeFlags));
    PassVarName_2(&labels);
}

QList<HOSTVAR> polledVariables(int count)
{
    QList<HOSTVAR> list;
    for (int i = 0; i < count; ++i) {
        HOSTVAR var;
        var.addressText = "Main." + variableName(i);
        var.count = 1;
        list << var;
    }
    return list;
}

void resetDriver()
{
    Communication_Protocol& driver = PLC_driver;
    driver.readVarList.clear();
    driver.pendingReadList.clear();
    driver.writeVarList.clear();
    driver.onceReadList.clear();
    driver.protocolList.clear();
    driver.retVar = RW_VAR();
    driver.cycleState = 100;
    driver.writeTurns = 0;
    driver.onceReadTurns = 0;
    driver.scanCount = 0;
    driver.commFailed = false;
    driver.batchCount = 0;
    driver.transactionCounter = 0;
    driver.labelTable.clear();
    driver.byteCache.clear();
    driver.wordCache.clear();
    driver.dwordCache.clear();
    std::memset(&connection, 0, sizeof connection);
    connection.writeMode = 2;
    SetComInfo(&connection);
    RegistCallBackFuncIntf(&varDone, &commFail);
    varDoneCalls = 0;
    commFailCalls = 0;
}

unsigned long varDoneCount()
{
    return varDoneCalls;
}

unsigned long commFailCount()
{
    return commFailCalls;
}

bool goodTurn()
{
    // One buffer for all replies, as a link has it.
    static QByteArray reply(kReplyBytes, '\1');
    const Protocol* request = ComCommunication();
    if (!request) {
        return false;
    }
    return DataCom(&reply, request->replyLength)->status == 1;
}

bool failedTurn()
{
    return ComCommunication() && DataCom(nullptr, 0)->status != 0;
}

} // namespace bench
} // namespace tavmir
