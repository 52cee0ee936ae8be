#include "checked/small_host.h"

#include "support/qt_compat.h"

namespace tavmir::checked_tests
{

namespace
{

int onVarDone(int, int, int, int)
{
    if (insideCallback) {
        insideCallback();
    }
    return 0;
}

int onCommFail(QList<RW_VAR>, int, int)
{
    return 0;
}

void drop(QtMsgType, const QString&) {}

} // namespace

std::function<void()> insideCallback;

ComInfo& record()
{
    static ComInfo info = ComInfo();
    info.defaultStation = 1;
    info.writeMode = 2;
    return info;
}

QList<Label_Type_Info> labels()
{
    using namespace test;
    const Label_Type_Info axis =
        structureType(QList<Label_Type_Info>() << variable("Pos", 6, 0) << variable("Vel", 7, 32));
    return QList<Label_Type_Info>() << label(
               "Main", QList<Label_Type_Info>()
                           << variable("Run", 1, 100) << variable("W", 4 | kBitSuffix, 3000)
                           << variable("D", 6 | kBitSuffix, 4000) << textVariable("Text", 5008, 8)
                           << arrayVariable("Row", 4, 10000, QList<int>() << 0 << 2000)
                           << structureArray("Axis", 1000, axis, 96, QList<int>() << 0 << 3));
}

void setUp()
{
    test::installMessageHook(&drop);
    SetComInfo(&record());
    RegistCallBackFuncIntf(&onVarDone, &onCommFail);
    FlashLocalRegister(nullptr, nullptr, nullptr);
    QList<Label_Type_Info> list = labels();
    PassVarName_2(&list);
}

void setUpPolling(const QList<const char*>& addresses, int count)
{
    setUp();
    QList<HOSTVAR> vars;
    for (const char* address : addresses) {
        vars << test::hostVar(address, count);
    }
    ReCreatReadVarList(&vars);
}

void pollWords(int elements)
{
    for (int i = 0; i < elements; ++i) {
        const RW_VAR var = test::element(4, 16 * i);
        AddListReadVar(&var);
    }
}

QByteArray replyTo(const Protocol& request)
{
    QByteArray reply = request.frame.left(9);
    const int entries = static_cast<unsigned char>(reply.at(8));
    const int entryBytes = (request.replyLength - 9) / entries;
    for (int i = 0; i < entries && entryBytes > 0; ++i) {
        reply += request.frame.mid(9 + 4 * i, 4) + QByteArray(entryBytes - 4, '\0');
    }
    const int length = reply.size() - 6;
    reply[4] = static_cast<char>(length >> 8);
    reply[5] = static_cast<char>(length & 0xFF);
    return reply;
}

bool turn()
{
    const Protocol* const request = ComCommunication();
    if (!request) {
        return false;
    }
    QByteArray reply = replyTo(*request);
    DataCom(&reply, reply.size());
    return true;
}

RW_VAR goodWrite(int address)
{
    RW_VAR var = test::writeOf(4, address, hex("01 00"));
    var.station = 1;
    return var;
}

void turnWithCallback()
{
    setUp();
    const RW_VAR var = goodWrite();
    AddListWriteVar(&var);
    turn();
}

std::vector<HostPair> allHosts()
{
    std::vector<HostPair> all;
    for (const auto& part : {setUpHosts(), threadHosts(), callbackHosts(), recordHosts(),
                             labelHosts(), replyHosts(), turnHosts()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

} // namespace tavmir::checked_tests
