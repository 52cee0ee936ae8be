#include "trace.h"

#include "frame_bytes.h"

#include "wire/frame_words.h"

namespace tavmir::controller
{

namespace
{

wire::ElementName namesFrom(const ElementNames& names)
{
    return [&names](std::uint32_t address, int bits) {
        return names.nameOf(address, bits).toStdString();
    };
}

} // namespace

QString requestInWords(const QByteArray& frame, const Request& request, const ElementNames& names)
{
    const unsigned char* bytes = bytesOf(frame);
    const std::string words = request.exceptionCode == 0
                                  ? wire::requestInWords(bytes, sizeOf(frame), namesFrom(names))
                                  : wire::titleInWords(wire::viewFrame(bytes, sizeOf(frame))) +
                                        ": exception " +
                                        wire::exceptionInWords(request.exceptionCode);
    return QString::fromStdString(words);
}

QString replyInWords(const QByteArray& reply, const ElementNames& names)
{
    return QString::fromStdString(
        wire::replyInWords(bytesOf(reply), sizeOf(reply), namesFrom(names)));
}

} // namespace tavmir::controller
