#include "trace.h"

#include "frame_bytes.h"

#include "wire/frame_words.h"

namespace tavmir::controller
{

namespace
{

wire::DescribeElements namesFrom(const project::ElementNames& names)
{
    return [&names](const wire::ElementInFrame* first, std::size_t count) {
        return names.describe(first, count);
    };
}

} // namespace

QString requestInWords(const QByteArray& frame, const Request& request,
                       const project::ElementNames& names)
{
    const unsigned char* bytes = bytesOf(frame);
    const std::string words = request.exceptionCode == 0
                                  ? wire::requestInWords(bytes, sizeOf(frame), namesFrom(names))
                                  : wire::titleInWords(wire::viewFrame(bytes, sizeOf(frame))) +
                                        ": exception " +
                                        wire::exceptionInWords(request.exceptionCode);
    return QString::fromStdString(words);
}

QString replyInWords(const QByteArray& reply, const project::ElementNames& names)
{
    return QString::fromStdString(
        wire::replyInWords(bytesOf(reply), sizeOf(reply), namesFrom(names)));
}

} // namespace tavmir::controller
