#include "situation_test.h"

#include "support/label_tree.h"
#include "support/records.h"

namespace tavmir::situations
{

namespace
{

QString levelText(int index)
{
    return QString("Main.Level[%1]").arg(index);
}

} // namespace

SituationTest::SituationTest()
{
    test::passLabels({test::label("Main", {test::arrayVariable("Level", 4, 1600, {0, 40})})});
    connectLink();
}

void SituationTest::connectLink()
{
    host::LinkOptions options;
    options.host = "127.0.0.1";
    options.port = controller.port();
    options.connectTimeoutMs = 5000;
    options.replyTimeoutMs = replyTimeoutMs;
    options.reconnectMinMs = 1;
    options.reconnectMaxMs = 5;
    link = std::make_unique<host::WatchedLink>(options);
}

SituationTest::Turn SituationTest::turn()
{
    Turn done;
    const Protocol* request = ComCommunication();
    if (request == nullptr) {
        return done;
    }
    done.sent = true;
    done.frame = request->frame;
    QByteArray reply;
    done.result = link->exchange(request->frame, reply);
    const bool answered = done.result == host::ExchangeEnd::reply;
    done.status = DataCom(&reply, answered ? reply.size() : 0)->status;
    return done;
}

bool SituationTest::recovers(int most)
{
    for (int i = 0; i < most; ++i) {
        if (turn().status == 1) {
            return true;
        }
    }
    return false;
}

int SituationTest::level(int index)
{
    QByteArray data;
    GetRegisterData(levelText(index), 0, 0, 0, &data, 1);
    return static_cast<unsigned char>(data.at(0)) + 256 * static_cast<unsigned char>(data.at(1));
}

void SituationTest::pollLevels(int count, int first)
{
    QList<HOSTVAR> list;
    list.append(test::hostVar(levelText(first).toLatin1().constData(), count));
    ASSERT_EQ(count, ReCreatReadVarList(&list));
}

int SituationTest::writeLevel(int index, int value, int hostKey, int varKey)
{
    QByteArray data;
    data.append(static_cast<char>(value % 256));
    data.append(static_cast<char>(value / 256));
    return SetRegisterData(levelText(index), 0, QString(), 1, &data, 1, hostKey, varKey);
}

int SituationTest::readLevelOnce(int index, int hostKey, int varKey)
{
    RW_VAR var;
    var.hostKey = hostKey;
    var.varKey = varKey;
    var.addressText = levelText(index);
    var.count = 1;
    return AddListOnceReadVar(&var);
}

ScriptedController::Script SituationTest::answering(quint32 value)
{
    return [value](Peer& peer) {
        for (QByteArray request = peer.request(); !request.isEmpty(); request = peer.request()) {
            peer.send(rightReply(request, value));
        }
    };
}

} // namespace tavmir::situations
