// Reads and writes of the fake controller.
#include "fake_controller.h"

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

quint32 bigEndian(const QByteArray& bytes)
{
    quint32 number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

} // namespace

void FakeController::start(int port)
{
    server_ =
        std::make_unique<TestServer>([this](TestServer::Client& client, const QByteArray& request,
                                            int) { answer(client, request); },
                                     port);
    port_ = server_->port();
}

void FakeController::set(char readFunction, quint32 address, quint32 number)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    numbers_[{readFunction, address}] = number;
}

quint32 FakeController::get(char readFunction, quint32 address)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return numbers_[{readFunction, address}];
}

void FakeController::treat(const QByteArray& functions, Mood mood)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const char function : functions) {
        moods_[function] = mood;
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

void FakeController::answer(TestServer::Client& client, const QByteArray& request)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    requests_.push_back(request);
    const char function = request.at(7);
    switch (moods_[function]) {
    case Mood::silent:
        return;
    case Mood::refuses:
        client.send(exceptionTo(request, 3));
        return;
    case Mood::tooLong:
        client.send(replyTo(request, QByteArray(300, 'x')));
        return;
    case Mood::answers:
        break;
    }
    if (isWrite(function)) {
        store(request);
    }
    client.send(replyTo(request, isWrite(function) ? QByteArray() : entriesOfRead(request)));
}

QByteArray FakeController::entriesOfRead(const QByteArray& request)
{
    QByteArray entries;
    for (int i = 0; i < request.at(8); ++i) {
        const QByteArray address = request.mid(9 + 4 * i, 4);
        const quint32 number = numbers_[{request.at(7), bigEndian(address)}];
        entries += address;
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
    for (int i = 0; i < request.at(8); ++i) {
        const QByteArray entry = request.mid(9 + (4 + size) * i, 4 + size);
        quint32 number = 0;
        for (int byte = size; byte-- > 0;) {
            number = number << 8 | static_cast<unsigned char>(entry.at(4 + byte));
        }
        numbers_[{readFunction, bigEndian(entry.left(4))}] = number;
    }
}

} // namespace tavmir::host
