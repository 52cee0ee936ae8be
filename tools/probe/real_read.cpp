#include "real_read.h"

#include "plain_socket.h"

#include "wire/frame_layout.h"

namespace tavmir
{
namespace probe
{

namespace
{

// Shorter than the protocol allows, and longer than any answer to the driver.
const int kMostBytesAfterLength = 254;

const int kHeaderBytes = wire::kHeaderBytes;
const int kLengthOffset = wire::kLengthOffset;
const int kLengthEnd = wire::kLengthEnd;
const int kFunctionOffset = wire::kFunctionOffset;
const int kCountOffset = wire::kCountOffset;

const int kArrayFlag = 0x100;
const int kStructureFlag = 0x200;

int byteAt(const QByteArray& bytes, int offset)
{
    return static_cast<unsigned char>(bytes.at(offset));
}

int bytesPerElement(int dataType)
{
    return dataType == 1 ? 1 : dataType == 6 || dataType == 7 ? 4 : 2;
}

// The driver counts double words in units of 16 bits.
int hostCount(const Options& options)
{
    return bytesPerElement(options.dataType) == 4 ? 2 * options.count : options.count;
}

QString address()
{
    return "Probe.Value[0]";
}

// One label "Probe" with one array "Value" that begins at the element address.
QList<Label_Type_Info> labels(const Options& options)
{
    Label_Type_Info value;
    value.name = "Value";
    value.typeFlags = static_cast<quint16>(options.dataType | kArrayFlag);
    value.offset = options.elementAddress;
    value.dimensionCount = 1;
    value.arrayBounds << 10 << 0 << options.count; // decimal indices; limit = high - low
    value.elementSizes << 16;
    Label_Type_Info variables;
    variables.typeFlags = kStructureFlag;
    variables.members << value;
    variables.memberCount = 1;
    Label_Type_Info label;
    label.name = "Probe";
    label.elementType << variables;
    QList<Label_Type_Info> all;
    all << label;
    return all;
}

// Receives one frame.
std::string receiveFrame(PlainSocket& socket, int timeoutMs, QByteArray& answer)
{
    const std::string error = socket.receive(answer, kLengthEnd, timeoutMs);
    if (!error.empty()) {
        return error;
    }
    const int following = byteAt(answer, kLengthOffset) * 256 + byteAt(answer, kLengthOffset + 1);
    if (following < 2 || following > kMostBytesAfterLength) {
        return "the answer's length field makes no sense: " + std::to_string(following);
    }
    return socket.receive(answer, following, timeoutMs);
}

// Compares what names the request in its answer.
std::string compareAnswer(const QByteArray& frame, const QByteArray& answer)
{
    if (answer.left(kLengthOffset) != frame.left(kLengthOffset)) {
        return "the answer belongs to another request";
    }
    const int function = byteAt(frame, kFunctionOffset);
    if (byteAt(answer, kFunctionOffset) == (function | wire::kExceptionBit)) {
        return "the controller refused the request, code " +
               (answer.size() > kCountOffset ? std::to_string(byteAt(answer, kCountOffset)) : "?");
    }
    if (byteAt(answer, kFunctionOffset) != function) {
        return "the answer has another function code";
    }
    return std::string();
}

std::string receiveAnswer(PlainSocket& socket, const QByteArray& frame, int timeoutMs,
                          ProbeCapture& capture, QByteArray& answer)
{
    const std::string error = receiveFrame(socket, timeoutMs, answer);
    const std::string problem = error.empty() ? compareAnswer(frame, answer) : error;
    capture.received(answer, problem);
    return problem;
}

std::string exchange(const DriverCalls& driver, PlainSocket& socket, int timeoutMs,
                     ProbeCapture& capture, int& elements)
{
    const Protocol* request = driver.nextRequest();
    if (request == nullptr) {
        return "the driver has nothing to send";
    }
    const QByteArray frame = request->frame;
    if (frame.size() <= kHeaderBytes) {
        return "the driver made no read request";
    }
    std::string error = socket.send(frame, timeoutMs);
    if (!error.empty()) {
        return error;
    }
    capture.sent(frame);
    QByteArray answer;
    error = receiveAnswer(socket, frame, timeoutMs, capture, answer);
    if (!error.empty()) {
        return error;
    }
    const int status = driver.takeAnswer(&answer, answer.size())->status;
    if (status != 1) {
        return "the driver refused the answer of " + std::to_string(answer.size()) +
               " bytes, code " + std::to_string(status);
    }
    elements += byteAt(frame, kCountOffset);
    return std::string();
}

int ignoreVariable(int, int, int, int)
{
    return 0;
}

int ignoreFailure(QList<RW_VAR>, int, int)
{
    return 0;
}

} // namespace

std::string readValues(const DriverCalls& driver, const Options& options, ProbeCapture& capture,
                       std::vector<unsigned int>& values)
{
    ComInfo link = ComInfo(); // all words 0: no retries, every variable at the default station
    link.defaultStation = options.station;
    driver.setComInfo(&link);
    driver.registerCallbacks(ignoreVariable, ignoreFailure);
    QList<Label_Type_Info> known = labels(options);
    driver.passLabels(&known);
    HOSTVAR polled;
    polled.addressText = address();
    polled.count = hostCount(options);
    QList<HOSTVAR> screen;
    screen << polled;
    const int entries = driver.rebuildReadList(&screen);
    if (entries != options.count) {
        return "the driver made " + std::to_string(entries) + " entries out of " +
               std::to_string(options.count) + " elements";
    }

    PlainSocket socket;
    std::vector<wire::ConnectAttempt> attempts;
    std::string error = socket.connectTo(options.controller, options.timeoutMs, attempts);
    capture.tried(attempts);
    for (int elements = 0; error.empty() && elements < options.count;) {
        error = exchange(driver, socket, options.timeoutMs, capture, elements);
    }
    capture.closed(error);
    if (!error.empty()) {
        return error;
    }

    QByteArray data;
    if (driver.getValues(address(), 0, 0, 0, &data, hostCount(options)) != 1) {
        return "the driver refused its own address";
    }
    const int width = bytesPerElement(options.dataType);
    for (int i = 0; i < options.count; ++i) {
        unsigned int value = 0;
        for (int byte = width - 1; byte >= 0; --byte) {
            value = value << 8 | static_cast<unsigned int>(byteAt(data, i * width + byte));
        }
        values.push_back(value);
    }
    return std::string();
}

} // namespace probe
} // namespace tavmir
