#include "support/plant.h"

#include <cstring>

namespace tavmir
{
namespace bench
{

namespace
{

// Bits from one variable to the next: twice the widest type, so that no two are adjacent.
const int kBitsApart = 64;

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

Label_Type_Info variable(const QString& name, int typeFlags, int offset)
{
    Label_Type_Info info;
    info.name = name;
    info.typeFlags = static_cast<quint16>(typeFlags);
    info.offset = offset;
    return info;
}

Label_Type_Info arrayVariable(const QString& name, int typeFlags, int offset, int high)
{
    Label_Type_Info info = variable(name, typeFlags | kArray, offset);
    info.dimensionCount = 1;
    info.arrayBounds << 10 << 0 << high;
    return info;
}

Label_Type_Info structureType(const QList<Label_Type_Info>& members)
{
    Label_Type_Info info = variable(QString(), kStructureType, 0);
    info.members = members;
    info.memberCount = static_cast<quint32>(members.size());
    return info;
}

Label_Type_Info label(const QString& name, const QList<Label_Type_Info>& variables)
{
    Label_Type_Info info = variable(name, 0, 0);
    info.elementType << structureType(variables);
    return info;
}

QString variableName(int i)
{
    return QString::fromLatin1("Variable%1").arg(i);
}

QList<Label_Type_Info> variables(int count, int typeFlags)
{
    QList<Label_Type_Info> list;
    for (int i = 0; i < count; ++i)
        list << variable(variableName(i), typeFlags, i * kBitsApart);
    return list;
}

void passMixedPlant()
{
    Label_Type_Info axis = arrayVariable(QString::fromLatin1("Axis"), kStructure, 100000, 16);
    axis.elementSizes << 96;
    axis.elementType << structureType(
        QList<Label_Type_Info>() << variable(QString::fromLatin1("Position"), kDoubleWord, 0)
                                 << variable(QString::fromLatin1("Velocity"), kDoubleWord, 32));
    QList<Label_Type_Info> labels;
    labels << label(QString::fromLatin1("Main"),
                    QList<Label_Type_Info>()
                        << variable(QString::fromLatin1("Speed"), kWord, 16)
                        << variable(QString::fromLatin1("State"), kWord | kBitSuffix, 32)
                        << arrayVariable(QString::fromLatin1("Recipe"), kWord, 1600, kArrayElements)
                        << axis);
    PassVarName_2(&labels);
}

void passPlant(int count, int typeFlags)
{
    QList<Label_Type_Info> labels;
    labels << label(QString::fromLatin1("Main"), variables(count, typeFlags));
    PassVarName_2(&labels);
}

QList<HOSTVAR> polledVariables(int count)
{
    QList<HOSTVAR> list;
    for (int i = 0; i < count; ++i) {
        HOSTVAR var;
        var.addressText = QString::fromLatin1("Main.") + variableName(i);
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
    if (!request)
        return false;
    return DataCom(&reply, request->replyLength)->status == 1;
}

bool failedTurn()
{
    return ComCommunication() && DataCom(nullptr, 0)->status != 0;
}

} // namespace bench
} // namespace tavmir
