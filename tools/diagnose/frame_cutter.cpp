// Around the decoder that host and probe use.
#include "frame_cutter.h"

#include "reply_check.h"

#include <utility>

namespace tavmir::diagnose
{

namespace
{

// A frame may end behind its function: then it is one of a wrong length.
constexpr wire::LengthLimits kLengths = {2, wire::kReplyLengths.most};

bool beginsFrame(const std::vector<unsigned char>& bytes)
{
    if (bytes.size() < wire::kCountOffset) {
        return false;
    }
    const std::size_t length = wire::bigEndian16(bytes.data() + wire::kLengthOffset);
    const auto function =
        static_cast<std::uint8_t>(bytes[wire::kFunctionOffset] & ~wire::kExceptionBit);
    return wire::bigEndian16(bytes.data() + wire::kProtocolOffset) == 0 &&
           length >= kLengths.least && length <= kLengths.most &&
           wire::findFunctionCode(function) != nullptr;
}

bool isWhole(const std::vector<unsigned char>& bytes)
{
    return isWholeReply(bytes.data(), bytes.size()) || isWholeRequest(bytes.data(), bytes.size());
}

} // namespace

FrameCutter::FrameCutter(bool fromBeginning) : decoder_(kLengths), isLost_(!fromBeginning) {}

Piece FrameCutter::partial()
{
    const std::size_t promised =
        begun_.size() < wire::kLengthEnd
            ? 0
            : wire::kLengthEnd + wire::bigEndian16(begun_.data() + wire::kLengthOffset);
    Piece part{Piece::Kind::part, begun_, begunAt_};
    part.words = std::to_string(begun_.size()) +
                 (promised > 0 ? " of " + std::to_string(promised) : std::string()) + " bytes";
    return part;
}

void FrameCutter::forget()
{
    decoder_.clear();
    begun_.clear();
}

std::vector<Piece> FrameCutter::take(const std::vector<unsigned char>& bytes, Nanoseconds at)
{
    std::vector<Piece> pieces;
    if (expectsNew_ && !begun_.empty() && isWhole(bytes)) {
        pieces.push_back(partial());
        forget();
    }
    expectsNew_ = false;
    if (isLost_ && !beginsFrame(bytes)) {
        unread_ += bytes.size();
        return pieces;
    }
    isLost_ = false;
    for (std::size_t taken = 0; taken < bytes.size();) {
        const std::size_t added = decoder_.append(bytes.data() + taken, bytes.size() - taken);
        begun_.insert(begun_.end(), bytes.begin() + static_cast<std::ptrdiff_t>(taken),
                      bytes.begin() + static_cast<std::ptrdiff_t>(taken + added));
        begunAt_ = at;
        taken += added;
        wire::FrameView frame;
        wire::FrameDecoder::State state;
        while ((state = decoder_.next(frame)) == wire::FrameDecoder::State::frame) {
            pieces.push_back({Piece::Kind::frame, {frame.bytes, frame.bytes + frame.size}, at});
            begun_.erase(begun_.begin(), begun_.begin() + static_cast<std::ptrdiff_t>(frame.size));
        }
        if (state == wire::FrameDecoder::State::broken) {
            begun_.insert(begun_.end(), bytes.begin() + static_cast<std::ptrdiff_t>(taken),
                          bytes.end());
            pieces.push_back({Piece::Kind::noFrame, begun_, at, decoder_.reason()});
            forget();
            isLost_ = true;
            break;
        }
    }
    return pieces;
}

void FrameCutter::lack()
{
    unread_ += begun_.size();
    forget();
    isLost_ = true;
}

bool FrameCutter::end(Piece& part)
{
    if (begun_.empty()) {
        return false;
    }
    part = partial();
    forget();
    return true;
}

} // namespace tavmir::diagnose
