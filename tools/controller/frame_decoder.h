// Cuts a stream of bytes into request frames, however TCP split or joined them. Knows bytes only:
// no socket, no clock, no memory of the controller.
//
// append bytes → takeFrame until it gives nothing → append more, or, when isBroken, give the
// stream up: after a bad header nobody can say where the next frame begins.
#ifndef TAVMIR_CONTROLLER_FRAME_DECODER_H
#define TAVMIR_CONTROLLER_FRAME_DECODER_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace tavmir::controller
{

class FrameDecoder
{
public:
    // Keeps a copy. A broken stream keeps nothing more.
    void append(const char* bytes, int size);
    void append(const QByteArray& bytes) { append(bytes.constData(), bytes.size()); }

    // The next whole frame, header included; nothing when more bytes are needed or the stream is
    // broken. A frame has 8 to 260 bytes and a length field that is true.
    std::optional<QByteArray> takeFrame();

    // True once takeFrame met a protocol id other than 0 or a length that no frame has.
    bool isBroken() const { return !reason_.isEmpty(); }

    // What was wrong, for a log line; empty while the stream is whole.
    QString reason() const { return reason_; }

    // Bytes kept: once takeFrame gave nothing, never more than an unfinished frame.
    int keptBytes() const { return bytes_.size() - begin_; }

private:
    std::optional<QByteArray> endWith(const QString& reason);

    QByteArray bytes_;
    int begin_ = 0; // bytes before it are taken
    QString reason_;
};

} // namespace tavmir::controller

#endif
