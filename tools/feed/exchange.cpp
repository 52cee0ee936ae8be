// Exchanges copied, and in words.
#include "exchange.h"

#include "project/counted.h"
#include "wire/frame_layout.h"

#include <cstring>

namespace tavmir::host
{

void copyExchange(const Exchange& from, const char* request, const char* reply, Exchange& to)
{
    const void* const requestBytes =
        request != nullptr ? request : static_cast<const void*>(from.request);
    const void* const replyBytes = reply != nullptr ? reply : static_cast<const void*>(from.reply);
    std::memcpy(static_cast<void*>(&to), &from, offsetof(Exchange, request));
    copyBytes(to.request, requestBytes, from.requestKept());
    copyBytes(to.reply, replyBytes, from.replyKept());
}

[[gnu::noinline]] void copyBytes(void* to, const void* from, size_t bytes)
{
    std::memcpy(to, from, bytes);
}

namespace
{

QString foreignInWords(quint32 frames)
{
    return frames == 0
               ? QString()
               : "; " +
                     project::counted(frames, "late or foreign reply", "late or foreign replies") +
                     " came instead";
}

} // namespace

QString exceptionInWords(quint8 code)
{
    const char* words = wire::exceptionWords(code);
    return words == nullptr ? QString("exception %1").arg(code)
                            : QString("exception %1 (%2)").arg(code).arg(words);
}

QString endInWords(const Exchange& exchange, const QString& linkProblem)
{
    switch (exchange.end) {
    case ExchangeEnd::reply:
        return QString("the controller's reply has %1 instead of %2")
            .arg(project::counted(exchange.replySize, "byte", "bytes"))
            .arg(exchange.expectedReply);
    case ExchangeEnd::exception:
        return "the controller refused the request: " + exceptionInWords(exchange.exceptionCode);
    case ExchangeEnd::timeout:
        return QString("the controller did not answer within %1 ms").arg(exchange.replyTimeoutMs) +
               foreignInWords(exchange.foreignFrames);
    case ExchangeEnd::cut:
        return "the controller's reply was cut off";
    case ExchangeEnd::lost:
        return "the connection was lost: " + linkProblem;
    case ExchangeEnd::broken:
        return "the stream from the controller made no sense";
    case ExchangeEnd::notSent:
        return "no connection to the controller: " + linkProblem;
    case ExchangeEnd::suppressed:
        return "the station is switched off";
    case ExchangeEnd::stopped:
        break;
    }
    return exchange.sentBytes > 0 ? "the host stopped before an answer came" : "the host stops";
}

} // namespace tavmir::host
