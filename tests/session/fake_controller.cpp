// Reads and writes of the fake controller.
#include "fake_controller.h"

#include <algorithm>
#include <thread>

namespace tavmir::host
{

namespace
{

int valueBytes(char readFunction)
{
    return readFunction == 'd' ? 1 : readFunction == 'f' ? 2 : 4;
}

bool isWrite(char function)
{
    return function == 'e' || function == 'g' || function == 'm';
}

} // namespace

FakeController::Judge untilNumber(int answered, FakeController::Mood before)
{
    return [=](const QByteArray&, int number) {
        return number < answered ? before : FakeController::Mood::answers;
    };
}

void FakeController::start(int port)
{
    server_.reset();
    server_ =
        std::make_unique<TestServer>([this](TestServer::Client& client, const QByteArray& request,
                                            int) { answer(client, request); },
                                     port);
    port_ = server_->port();
}

void FakeController::setAt(int station, char readFunction, quint32 address, quint32 number)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    numbers_[{station, readFunction, address}] = number;
}

quint32 FakeController::getAt(int station, char readFunction, quint32 address)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return numbers_[{station, readFunction, address}];
}

void FakeController::lack(char readFunction, quint32 address, int code)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    lacks_.erase({readFunction, address});
    if (code != 0) {
        lacks_[{readFunction, address}] = code;
    }
}

// 0: nothing that it names is lacking.
int FakeController::lackCode(const QByteArray& request)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const char function = request.at(7);
    const char readFunction = isWrite(function) ? static_cast<char>(function - 1) : function;
    for (const quint32 address : lacks_.empty() ? std::vector<quint32>() : addressesOf(request)) {
        const auto found = lacks_.find({readFunction, address});
        if (found != lacks_.end()) {
            return found->second;
        }
    }
    return 0;
}

void FakeController::treat(const QByteArray& functions, Mood mood)
{
    judge(functions, [mood](const QByteArray&, int) { return mood; });
}

void FakeController::judge(const QByteArray& functions, const Judge& judge)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const char function : functions) {
        judges_[function] = judge;
        asked_[function] = 0;
    }
}

std::vector<QByteArray> FakeController::requests(const QByteArray& functions)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<QByteArray> list;
    for (const QByteArray& request : requests_) {
        if (functions.contains(request.at(7))) {
            list.push_back(request);
        }
    }
    return list;
}

std::vector<QByteArray> FakeController::requestsOf(const QByteArray& functions, quint32 address)
{
    std::vector<QByteArray> list = requests(functions);
    const auto foreign = [address](const QByteArray& request) {
        const std::vector<quint32> named = addressesOf(request);
        return std::find(named.begin(), named.end(), address) == named.end();
    };
    list.erase(std::remove_if(list.begin(), list.end(), foreign), list.end());
    return list;
}

FakeController::Mood FakeController::moodFor(const QByteArray& request)
{
    Judge judge;
    int number = 0;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back(request);
        judge = judges_[request.at(7)];
        number = ++asked_[request.at(7)];
    }
    return judge ? judge(request, number) : Mood::answers;
}

void FakeController::answer(TestServer::Client& client, const QByteArray& request)
{
    const Mood mood = moodFor(request);
    if (replyMs_ > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(replyMs_));
    }
    if (const int code = lackCode(request)) {
        client.send(exceptionTo(request, code));
        return;
    }
    switch (mood) {
    case Mood::answers:
        client.send(carryOut(request));
        return;
    case Mood::silent:
        return;
    case Mood::refuses:
        client.send(exceptionTo(request, kExceptionCode));
        return;
    case Mood::isBusy:
        client.send(exceptionTo(request, kBusyCode));
        return;
    case Mood::tooLong:
        client.send(replyTo(request, QByteArray(300, 'x')));
        return;
    case Mood::closes:
        client.close();
        return;
    case Mood::loses:
        carryOut(request);
        return;
    case Mood::losesAndCloses:
        carryOut(request);
        client.close();
        return;
    case Mood::losesAndLeaves:
        carryOut(request);
        client.leave();
        return;
    case Mood::answersTwice:
        client.send(carryOut(request).repeated(2));
        return;
    case Mood::addsAByte: {
        QByteArray reply = carryOut(request) + 'x';
        reply[5] = static_cast<char>(reply.at(5) + 1);
        client.send(reply);
        return;
    }
    case Mood::straysFirst:
        client.send(strayReplies(request));
        client.send(carryOut(request));
        return;
    }
}

QByteArray FakeController::strayReplies(const QByteArray& request)
{
    const char function = request.at(7);
    const int entryBytes = isWrite(function) ? 0 : 4 + valueBytes(function);
    QByteArray otherAddresses(countOf(request) * entryBytes, '');
    QByteArray otherCount = replyTo(request, QByteArray((countOf(request) + 1) * entryBytes, ''));
    otherCount[8] = static_cast<char>(countOf(request) + 1);
    return isWrite(function) ? otherCount : replyTo(request, otherAddresses) + otherCount;
}

QByteArray FakeController::carryOut(const QByteArray& request)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!isWrite(request.at(7))) {
        return replyTo(request, entriesOfRead(request));
    }
    store(request);
    return replyTo(request, QByteArray());
}

QByteArray FakeController::entriesOfRead(const QByteArray& request)
{
    QByteArray entries;
    int place = 9;
    for (const quint32 address : addressesOf(request)) {
        const quint32 number = numbers_[{stationOf(request), request.at(7), address}];
        entries += request.mid(place, 4);
        place += 4;
        for (int byte = valueBytes(request.at(7)); byte-- > 0;) {
            entries += static_cast<char>(number >> (8 * byte) & 0xFF);
        }
    }
    return entries;
}

void FakeController::store(const QByteArray& request)
{
    const char readFunction = static_cast<char>(request.at(7) - 1);
    const int size = valueBytes(readFunction);
    int place = 9 + 4;
    for (const quint32 address : addressesOf(request)) {
        quint32 number = 0;
        for (int byte = size; byte-- > 0;) {
            number = number << 8 | static_cast<unsigned char>(request.at(place + byte));
        }
        numbers_[{stationOf(request), readFunction, address}] = number;
        place += 4 + size;
    }
}

} // namespace tavmir::host
