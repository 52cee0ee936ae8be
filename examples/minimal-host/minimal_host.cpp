// A whole host in one file: it polls a screen of variables, writes and reads on request, and says
// of each value how good it is. Built against the installed driver alone, with Qt 4.8 or Qt 5.
//
//   main thread           takes commands, prints what changed; never waits for the controller
//   communication thread  runs the driver's cycle and the socket; never waits for the terminal
//   gate                  one lock around the driver's calls and all that both threads share;
//                         nobody waits for the line or the terminal while holding it
// docs/integration.md shows what lies between marks like [labels] and [/labels].
#include <QtCore/QElapsedTimer>
#include <QtCore/QTime>
#include <QtCore/QtEndian>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <tavmir_kx_tcp/host_interface.h>
#include <thread>
#include <unistd.h>

namespace
{
const int kReplyMs = 500, kPollMs = 100, kStaleMs = 2000, kShortPauseMs = 100, kLongPauseMs = 4000;
const int kWrite = 1, kReadOnce = 2; // kinds of requests, as `cycleState` says; 0 is a poll
const int kKey = 100; // `hostKey` is this and the kind: 0 to 11 would change the failure codes

// [labels]
Label_Type_Info variable(const char* name, int type, int bitAddress, int first = 0, int size = 0)
{
    Label_Type_Info info;
    info.name = name;
    info.typeFlags = static_cast<quint16>(size > 0 ? type | 0x100 : type); // an array or not
    info.offset = bitAddress;
    info.dimensionCount = 1;
    info.arrayBounds << 10 << first << first + size; // decimal; the end is above the last one
    return info;
}

QList<Label_Type_Info> labels()
{
    Label_Type_Info axis = variable("", 0x200, 0), all = axis, label = variable("Main", 0, 0);
    axis.members << variable("Pos", 6, 0) << variable("Torque", 4, 64);
    axis.memberCount = 2;
    all.members << variable("Axis", 12, 1000, 0, 4) << variable("Title", 10, 6000)
                << variable("Run", 1, 100) << variable("Setpoint", 4, 3016)
                << variable("Counts", 4, 3200, 1, 6);
    all.memberCount = 5;
    all.members[0].elementType << axis;
    all.members[0].elementSizes << 112; // bits from one axis to the next
    all.members[1].elementSizes << 8;   // words of the text, two characters each
    label.elementType << all;
    return QList<Label_Type_Info>() << label;
} // [/labels]

struct Variable { // [variables]
    int screen;
    const char* address;
    int type, elements;
    int count() const { return type == 6 ? 2 * elements : elements; } // double words count twice
};
const Variable kVariables[] = {{0, "Main.Title", 10, 8},    {1, "Main.Run", 1, 1},
                               {1, "Main.Setpoint", 4, 1},  {1, "Main.Axis[1].Pos", 6, 1},
                               {1, "Main.Counts[1]", 4, 6}, {2, "Main.Axis[2].Torque", 4, 1}};
const int kVariableCount = sizeof kVariables / sizeof kVariables[0]; // [/variables]

struct Row {
    QMap<int, qint64> readAt;        // by element address
    qint64 oldest = 0, failedAt = 0; // of all elements, 0 until each was read; the last failure
    QByteArray problem = "not answered yet", value, shown; // why it failed; as read; as printed
};

std::atomic<bool> stopping(false);
QElapsedTimer timer;
ComInfo connection; // all words 0; the driver keeps a pointer to it
QMutex gate;        // of the driver and of these:
Row rows[kVariableCount];
QMap<int, QByteArray> operations[3]; // by kind: those under way, by `varKey`
QList<QByteArray> output;            // for the main thread to print
int screen = 1, lastKey = 0;
addrinfo* controller = 0;            // this and the rest are the communication thread's
int line = -1, pauseMs = 0;          // the socket; the pause after the last failure
bool again = false, unknown = false; // it comes once more; it may have been carried out
QByteArray problem;                  // of the last attempt, empty when it was good
qint64 nextPoll = 0;

QByteArray valueOf(const Variable& variable) // [value]
{
    QByteArray data, text;
    GetRegisterData(variable.address, 0, 0, 0, &data, variable.count());
    const uchar* bytes = reinterpret_cast<const uchar*>(data.constData());
    for (int i = 0; i < variable.elements && variable.type != 10; ++i) {
        const quint32 number = variable.type == 1   ? bytes[i]
                               : variable.type == 4 ? qFromLittleEndian<quint16>(bytes + 2 * i)
                                                    : qFromLittleEndian<quint32>(bytes + 4 * i);
        text += ' ' + QByteArray::number(number);
    }
    return variable.type == 10 ? QByteArray(data.constData()) : text.mid(1); // up to the first zero
} // [/value]

// [quality] A value is as old as its oldest element, and bad until each was read again.
void note(int address, Row& row, const Variable& variable)
{
    if (problem.isEmpty()) {
        row.readAt[address] = timer.elapsed();
        row.value = valueOf(variable);
    } else {
        row.failedAt = timer.elapsed();
        row.problem = problem;
    }
    if (row.readAt.size() == variable.elements) {
        row.oldest = *std::min_element(row.readAt.begin(), row.readAt.end());
    }
}

QByteArray stateOf(const Row& row)
{
    const bool stale = timer.elapsed() - row.oldest > kStaleMs;
    return row.oldest == 0              ? "\xe2\x80\x93 (never read: " + row.problem + ')'
           : row.oldest <= row.failedAt ? row.value + " (bad: " + row.problem + ')'
                                        : row.value + (stale ? " (stale)" : " (good)");
} // [/quality]

void endAll(int which, const char* how) // with the gate held
{
    for (QMap<int, QByteArray>& own = operations[which]; !own.isEmpty();) {
        output << own.take(own.begin().key()) + how;
    }
}

// [callbacks] Both run inside DataCom, with the gate and the driver's list lock held: they read
// values and take notes. A call that queues something would wait there for ever.
int variableDone(int, int hostKey, int varKey, int result)
{
    QMap<int, QByteArray>& own = operations[hostKey - kKey];
    const bool isWrite = hostKey == kKey + kWrite;
    if (own.contains(varKey)) { // not so for the first read of a screen's variable
        const QByteArray good = isWrite ? "done" : valueOf(kVariables[0]);
        const QByteArray bad = (isWrite && unknown ? "unknown: " : "not done: ") + problem;
        output << own.take(varKey) + ": " + (result == 1 ? good : bad);
    }
    return 0;
}

// What was queued behind the request goes with it, and nobody else reports that.
int requestGivenUp(QList<RW_VAR>, int, int)
{
    endAll(PLC_driver.cycleState, ": not done: dropped behind another");
    return 0;
} // [/callbacks]

// [screen] Each variable is read once at first: the screen fills at once, and an address that the
// driver refuses stays out of the rebuild, whose lock stays closed behind a type it cannot poll.
void showScreen(int number)
{
    const QMutexLocker lock(&gate);
    QList<HOSTVAR> polled;
    for (int i = 0; i < kVariableCount; ++i) {
        RW_VAR first;
        HOSTVAR next;
        first.hostKey = kKey; // no operation's
        first.addressText = next.addressText = kVariables[i].address;
        first.auxText = next.auxText = QString::number(i); // comes back with each element
        first.count = next.count = kVariables[i].count();
        if (kVariables[i].screen == number && AddListOnceReadVar(&first) > 0) {
            polled << next;
        }
    }
    ReCreatReadVarList(&polled);
    screen = number;
} // [/screen]

void writeSetpoint(const QByteArray& typed) // [write]
{
    bool isNumber = false;
    const quint16 value = qToLittleEndian(typed.toUShort(&isNumber)); // as the driver takes it
    QByteArray data(reinterpret_cast<const char*>(&value), sizeof value);
    const QMutexLocker lock(&gate);
    if (!isNumber) {
        output << "write " + typed + ": not a number from 0 to 65535";
    } else if (SetRegisterData("Main.Setpoint", 0, "", 0, &data, 1, kKey + kWrite, ++lastKey) > 0) {
        operations[kWrite][lastKey] = "Main.Setpoint := " + typed;
    }
} // [/write]

void readTitle() // [read-once]
{
    const QMutexLocker lock(&gate);
    RW_VAR var;
    var.hostKey = kKey + kReadOnce;
    var.varKey = ++lastKey;
    var.addressText = kVariables[0].address;
    var.count = kVariables[0].count();
    if (AddListOnceReadVar(&var) > 0) {
        operations[kReadOnce][lastKey] = kVariables[0].address;
    }
} // [/read-once]

// [connect] What was not sent yet must not arrive later: it is thrown away.
void lose(const QByteArray& why)
{
    const linger reset = {1, 0};
    ::setsockopt(line, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    ::close(line);
    line = -1;
    problem = why;
    const QMutexLocker lock(&gate);
    output << "connection: " + why;
}

void connectLine()
{
    const timeval patience = {kReplyMs / 1000, kReplyMs % 1000 * 1000};
    line = ::socket(controller->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ::setsockopt(line, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(line, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience); // and connect's
    if (::connect(line, controller->ai_addr, controller->ai_addrlen) != 0) {
        lose(std::strerror(errno == EINPROGRESS ? ETIMEDOUT : errno));
    }
} // [/connect]

// [compare] The driver looks at the length of a reply and at nothing else.
bool isAnswer(const Protocol& request, const QByteArray& reply)
{
    const QByteArray& frame = request.frame;
    const int count = static_cast<uchar>(frame.at(8));
    const int entry = (request.replyLength - 9) / count; // of a read: an address and its value
    bool same = reply.size() == request.replyLength && reply.left(4) == frame.left(4) &&
                reply.mid(6, 3) == frame.mid(6, 3); // transaction, protocol; station to count
    for (int i = 0; same && entry > 0 && i < count; ++i) {
        same = reply.mid(9 + i * entry, 4) == frame.mid(9 + i * 4, 4);
    }
    return same;
} // [/compare]

// [exchange] One frame; or none, and `problem` says why.
QByteArray receiveFrame()
{
    uchar bytes[6 + 1024];
    const ssize_t got = ::recv(line, bytes, 6, MSG_WAITALL);
    const int rest = got < 6 ? 0 : bytes[4] * 256 + bytes[5];
    if (got < 0 && errno == EAGAIN) {
        problem = "no valid answer";
    } else if (rest < 2 || rest > 1024 || bytes[2] != 0 || bytes[3] != 0 ||
               ::recv(line, bytes + 6, static_cast<size_t>(rest), MSG_WAITALL) != rest) {
        lose(got > 0 ? "no whole frame" : "closed by the controller");
    }
    return problem.isEmpty() ? QByteArray(reinterpret_cast<char*>(bytes), 6 + rest) : QByteArray();
}

// One attempt: the answer; or none, and `problem` says why.
QByteArray exchange(const Protocol& request)
{
    const QByteArray& frame = request.frame;
    const qint64 end = timer.elapsed() + kReplyMs;
    const bool before = again && unknown;
    problem.clear();
    if (line < 0) {
        connectLine();
    }
    if (line >= 0 && ::send(line, frame, size_t(frame.size()), MSG_NOSIGNAL) != frame.size()) {
        lose("nothing can be sent");
    }
    unknown = before || problem.isEmpty();
    while (problem.isEmpty() && timer.elapsed() <= end) {
        const QByteArray reply = receiveFrame();
        if (isAnswer(request, reply)) {
            return reply;
        }
        if (reply.size() == 9 && reply.left(4) == frame.left(4) && reply.at(6) == frame.at(6) &&
            reply.at(7) == static_cast<char>(frame.at(7) | 0x80)) {
            problem = "refused, code " + QByteArray::number(static_cast<uchar>(reply.at(8)));
            unknown = before;
        }
    }
    problem += problem.isEmpty() ? "no valid answer" : "";
    return QByteArray();
} // [/exchange]

void handOver(QByteArray reply) // [hand-over]
{
    const QMutexLocker lock(&gate);
    QMap<int, int> rowOf; // by element address; taken now, since DataCom lets go of the entries
    for (int i = 0; i < PLC_driver.batchCount && PLC_driver.cycleState != kWrite; ++i) {
        const RW_VAR& element = *PLC_driver.batchElements[i];
        rowOf.insert(element.elementAddress, element.auxText.toInt());
    }
    again = DataCom(&reply, reply.size())->status == 0;
    for (QMap<int, int>::iterator i = rowOf.begin(); i != rowOf.end() && !again; ++i) {
        note(i.key(), rows[i.value()], kVariables[i.value()]);
    }
    connection.retryCount = problem.isEmpty() ? 0 : connection.retryCount; // of one request alone
    nextPoll = timer.elapsed() + kPollMs;
} // [/hand-over]

// [cycle] The request to send, or null.
Protocol* nextRequest()
{
    const QMutexLocker lock(&gate);
    PLC_driver.listMutex.lock();
    const bool queued = !PLC_driver.writeVarList.isEmpty() || !PLC_driver.onceReadList.isEmpty();
    PLC_driver.listMutex.unlock();
    const bool due = again || queued || timer.elapsed() >= nextPoll;
    Protocol* request = due ? ComCommunication() : 0;
    return request != 0 || !due ? request : ComCommunication(); // one null alone says nothing
}

void runCycle()
{
    for (qint64 restEnd = 0; !stopping;) {
        const Protocol* request = timer.elapsed() < restEnd ? 0 : nextRequest();
        if (request == 0) {
            ::usleep(20 * 1000);
            continue;
        }
        handOver(exchange(*request));
        if (!again && unknown && !problem.isEmpty() && line >= 0) {
            lose(problem); // what may still come belongs to nobody
        }
        // From failure to failure longer, and never round: many panels must not come together.
        pauseMs = problem.isEmpty() ? 0 : qBound(kShortPauseMs, 2 * pauseMs, kLongPauseMs);
        restEnd = timer.elapsed() + pauseMs * (75 + timer.nsecsElapsed() % 51) / 100;
    }
} // [/cycle]

void display() // [display]
{
    QList<QByteArray> lines;
    gate.lock();
    for (int i = 0; i < kVariableCount; ++i) {
        const QByteArray state = stateOf(rows[i]);
        if (kVariables[i].screen == screen && state != rows[i].shown) {
            const QByteArray age =
                ", age " + QByteArray::number(timer.elapsed() - rows[i].oldest) + " ms";
            output << kVariables[i].address + (" = " + state) + (rows[i].oldest > 0 ? age : "");
            rows[i].shown = state;
        }
    }
    lines.swap(output);
    gate.unlock();
    for (int i = 0; i < lines.size(); ++i) {
        std::printf("%s %s\n", qPrintable(QTime::currentTime().toString("HH:mm:ss.zzz")),
                    lines.at(i).constData());
    }
    std::fflush(stdout);
} // [/display]

void serveOperator() // [commands]
{
    char typed[80];
    for (pollfd input = {STDIN_FILENO, POLLIN, 0}; !stopping; display()) {
        const bool isTyped = ::poll(&input, 1, 100) > 0;
        const QByteArray words = isTyped ? std::fgets(typed, sizeof typed, stdin) : "";
        if (words.isNull()) {
            input.fd = -1; // the end of the commands, not of the host
        } else if (words.startsWith("write ")) {
            writeSetpoint(words.mid(6).trimmed());
        } else if (words.startsWith("screen ")) {
            showScreen(words.mid(7).trimmed().toInt());
        } else if (words.startsWith("read")) {
            readTitle();
        }
    }
} // [/commands]
} // namespace

int main(int argc, char** argv)
{
    const QByteArray target = argc == 2 ? argv[1] : "";
    const int colon = target.lastIndexOf(':');
    if (colon < 1 ||
        ::getaddrinfo(target.left(colon), target.mid(colon + 1), 0, &controller) != 0) {
        std::fputs("Usage: minimal_host HOST:PORT\n", stderr);
        return target == "--help" ? 0 : 2;
    }
    std::signal(SIGINT, [](int) { stopping = true; });
    std::signal(SIGTERM, [](int) { stopping = true; });
    std::setvbuf(stdin, 0, _IONBF, 0); // poll() does not see what stdio has read ahead
    timer.start();
    connection.defaultStation = 1; // [set-up]
    connection.retryLimit = 2;
    connection.writeMode = 2; // to the controller, not only into the cache
    SetComInfo(&connection);
    RegistCallBackFuncIntf(variableDone, requestGivenUp);
    FlashLocalRegister(0, 0, 0);
    QList<Label_Type_Info> known = labels();
    PassVarName_2(&known);
    showScreen(1);                       // [/set-up]
    std::thread communication(runCycle); // [end]
    serveOperator();
    communication.join(); // no call may run when the library is unloaded
    endAll(kWrite, ": unknown: the host ended");
    endAll(kReadOnce, ": not done: the host ended");
    display();
    return 0; // [/end]
}
