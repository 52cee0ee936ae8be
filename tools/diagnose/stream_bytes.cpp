// libtins puts the segments in order. Its follower of whole streams is not used: it has no
// nanoseconds, does not say who closed, takes a port used anew for the connection before, and gives
// a stream up where bytes are missing.
#include "stream_bytes.h"

#include <tins/tcp_ip/data_tracker.h>

#include <algorithm>
#include <utility>

namespace tavmir::diagnose
{

namespace
{

// Numbers further away than this belong to something else. It bounds what waits, too.
constexpr std::uint32_t kNear = 1 << 20;
constexpr std::size_t kMostWaiting = 512; // segments

} // namespace

StreamBytes::StreamBytes() = default;
StreamBytes::~StreamBytes() = default;

void StreamBytes::beginAt(std::uint32_t sequence)
{
    tracker_ = std::make_unique<Tins::TCPIP::DataTracker>(sequence);
}

std::uint32_t StreamBytes::distance(std::uint32_t sequence) const
{
    return sequence - tracker_->sequence_number(); // numbers begin again behind the last one
}

bool StreamBytes::isFar(std::uint32_t sequence) const
{
    const std::uint32_t ahead = distance(sequence);
    return ahead > kNear && ahead < 0U - kNear;
}

void StreamBytes::take(std::uint32_t sequence, std::vector<std::uint8_t> bytes)
{
    if (!bytes.empty() && !isFar(sequence)) {
        tracker_->process_payload(sequence, std::move(bytes));
    }
}

std::vector<std::uint8_t> StreamBytes::fetch()
{
    return std::exchange(tracker_->payload(), {});
}

std::uint32_t StreamBytes::skipTo(std::uint32_t sequence)
{
    const std::uint32_t ahead = distance(sequence);
    if (ahead == 0 || ahead > kNear) {
        return 0;
    }
    std::uint32_t lacks = ahead;
    for (const auto& waiting : tracker_->buffered_payload()) {
        lacks = std::min(lacks, distance(waiting.first));
    }
    goOnAt(tracker_->sequence_number() + lacks);
    return lacks;
}

std::uint32_t StreamBytes::skipToWaiting()
{
    return tracker_->buffered_payload().empty() ? 0 : skipTo(tracker_->sequence_number() + kNear);
}

bool StreamBytes::waitsForTooMuch() const
{
    return tracker_->buffered_payload().size() > kMostWaiting;
}

void StreamBytes::goOnAt(std::uint32_t sequence)
{
    // A fresh one: libtins's own way of going on forgets what waits there.
    auto fresh = std::make_unique<Tins::TCPIP::DataTracker>(sequence);
    for (const auto& waiting : tracker_->buffered_payload()) {
        fresh->process_payload(waiting.first, waiting.second);
    }
    tracker_ = std::move(fresh);
}

} // namespace tavmir::diagnose
