// Frames byte by byte.
#include "made_exchange.h"

#include "project/value_format.h"
#include "wire/frame_layout.h"

#include <cstring>

namespace tavmir::host
{

namespace
{

// Writes most significant byte first, as far as there is room; the sizes count on.
class Writer
{
public:
    Writer(unsigned char* bytes, quint32& size) : bytes_(bytes), size_(size) { size_ = 0; }

    void put(quint32 number, size_t count)
    {
        for (size_t i = count; i > 0; --i) {
            if (size_ < Exchange::kMostBytes) {
                bytes_[size_] = static_cast<unsigned char>(number >> (8 * (i - 1)));
            }
            ++size_;
        }
    }

    void putHeader(size_t frameBytes, int station, quint8 function, size_t count)
    {
        put(0x1234, 2);
        put(0, 2);
        put(static_cast<quint32>(frameBytes - wire::kLengthEnd), 2);
        put(static_cast<quint32>(station), 1);
        put(function, 1);
        put(static_cast<quint32>(count), 1);
    }

private:
    unsigned char* bytes_;
    quint32& size_;
};

} // namespace

Clock::time_point momentAt(int ms)
{
    return Clock::time_point(std::chrono::hours(1) + std::chrono::milliseconds(ms));
}

Exchange madeRead(quint8 function, int station, const std::vector<ReadElement>& elements,
                  Clock::time_point at)
{
    const wire::FunctionCode& code = *wire::findFunctionCode(function);
    const size_t count = elements.size();
    Exchange exchange;
    std::memset(exchange.request, 0xEE, sizeof exchange.request);
    std::memset(exchange.reply, 0xEE, sizeof exchange.reply);
    Writer request(exchange.request, exchange.requestSize);
    request.putHeader(wire::kHeaderBytes + count * wire::kAddressBytes, station, function, count);
    Writer reply(exchange.reply, exchange.replySize);
    reply.putHeader(wire::kHeaderBytes + count * code.entryBytes(), station, function, count);
    for (const ReadElement& element : elements) {
        request.put(static_cast<quint32>(element.address), wire::kAddressBytes);
        reply.put(static_cast<quint32>(element.address), wire::kAddressBytes);
        reply.put(element.number, code.valueBytes);
    }
    exchange.expectedReply = exchange.replySize;
    exchange.sentBytes = exchange.requestSize;
    exchange.receivedBytes = exchange.replySize;
    exchange.sentAt = at - std::chrono::milliseconds(1);
    exchange.endedAt = at;
    exchange.end = ExchangeEnd::reply;
    return exchange;
}

Exchange madeEnd(ExchangeEnd end, quint32 sentBytes)
{
    Exchange exchange;
    exchange.end = end;
    exchange.sentBytes = sentBytes;
    exchange.expectedReply = 15;
    exchange.replySize = end == ExchangeEnd::reply ? 15 : end == ExchangeEnd::exception ? 9 : 0;
    return exchange;
}

FeedEntry entryOf(const Exchange& exchange)
{
    FeedEntry entry;
    entry.kind = FeedKind::exchange;
    entry.at = exchange.endedAt;
    entry.wall = exchange.endedWall;
    entry.exchange = exchange;
    return entry;
}

FeedEntry madePlan(quint32 generation, const std::vector<PolledElement>& polled)
{
    FeedEntry entry;
    entry.kind = FeedKind::planChanged;
    entry.plan = std::make_shared<PolledGeneration>(PolledGeneration{generation, polled});
    return entry;
}

PolledElement madeVariable(project::DataType type, qint32 address, int station, int words)
{
    PolledElement variable;
    variable.element.type = type;
    variable.element.address = static_cast<quint32>(address);
    variable.element.words = words;
    variable.element.addressText = QString("M.at%1").arg(address);
    variable.format = project::effectiveFormat(variable.element, project::Format::automatic);
    variable.name = variable.element.addressText;
    variable.station = station;
    return variable;
}

PolledElement madeBitOf(project::DataType type, qint32 address, int bitNumber, int station)
{
    PolledElement variable = madeVariable(type, address, station);
    variable.element.bitNumber = bitNumber;
    variable.element.addressText += QString(".b[%1]").arg(bitNumber);
    variable.name = variable.element.addressText;
    variable.format = project::effectiveFormat(variable.element, project::Format::automatic);
    return variable;
}

} // namespace tavmir::host
