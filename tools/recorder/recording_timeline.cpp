// Which file knows what of the time. Where the clock was set back, files lie over each other: there
// the one that was recorded later says what was.
#include "recording_reader.h"

#include <algorithm>

namespace tavmir::recorder
{

namespace
{

// What the span leaves of the pieces.
template <typename Piece>
std::vector<Piece> without(const std::vector<Piece>& pieces, TimeSpan span)
{
    std::vector<Piece> left;
    const auto add = [&](Piece piece, Micros from, Micros until) {
        piece.span = {from, until};
        if (from < until) {
            left.push_back(piece);
        }
    };
    for (const Piece& piece : pieces) {
        add(piece, piece.span.from, std::min(piece.span.until, span.from));
        add(piece, std::max(piece.span.from, span.until), piece.span.until);
    }
    return left;
}

bool isEarlier(const TimeSpan& left, const TimeSpan& right)
{
    return left.from < right.from;
}

} // namespace

quint64 RecordingReader::oldest() const
{
    const std::vector<Member> members = membersOf(folder_);
    return members.empty() ? 0 : members.front().number;
}

Micros RecordingReader::begin() const
{
    return CoveredTime().of(membersOf(folder_)).from;
}

TimeSpan RecordingReader::coverage() const
{
    const std::vector<TimeSpan> all = stretches();
    return all.empty() ? TimeSpan() : TimeSpan{all.front().from, all.back().until};
}

std::vector<TimeSpan> RecordingReader::stretches() const
{
    std::vector<TimeSpan> spans;
    parts([&](RecordingPart& part) {
        for (const TimeSpan& span : part.stretches()) {
            spans.push_back(span);
        }
        return true;
    });
    std::stable_sort(spans.begin(), spans.end(), isEarlier);
    std::vector<TimeSpan> joined;
    for (const TimeSpan& span : spans) {
        if (!joined.empty() && span.from <= joined.back().until) {
            joined.back().until = std::max(joined.back().until, span.until);
        } else {
            joined.push_back(span);
        }
    }
    return joined;
}

Micros RecordingReader::endOf(const Member& member, const std::vector<Member>& members) const
{
    if (member.number == members.back().number) {
        return coveredUntil(member);
    }
    Micros& end = ends_[member.number];
    if (end == 0) { // also of one that could not be read just then
        end = coveredUntil(member);
    }
    return end;
}

void RecordingReader::partsWithin(TimeSpan span, const TakePart& take) const
{
    const std::vector<Member> members = membersOf(folder_);
    for (const Member& member : members) {
        if (member.began >= span.until || endOf(member, members) < span.from) {
            continue;
        }
        QString ignored;
        const std::unique_ptr<RecordingPart> part = RecordingPart::open(member, ignored);
        if (part && !take(*part)) {
            return;
        }
    }
}

std::vector<RecordingReader::Piece> RecordingReader::piecesOf(TimeSpan span) const
{
    std::vector<Piece> pieces;
    partsWithin(span, [&](RecordingPart& part) {
        for (const TimeSpan& stretch : part.stretches()) {
            const TimeSpan within = {std::max(stretch.from, span.from),
                                     std::min(stretch.until, span.until)};
            if (within.from < within.until) {
                pieces = without(pieces, within);
                pieces.push_back({part.number(), within});
            }
        }
        return true;
    });
    std::stable_sort(pieces.begin(), pieces.end(), [](const Piece& left, const Piece& right) {
        return isEarlier(left.span, right.span);
    });
    return pieces;
}

void RecordingReader::piecesWithin(TimeSpan span, const TakePiece& take) const
{
    std::unique_ptr<RecordingPart> part;
    for (const Piece& piece : piecesOf(span)) {
        if (!part || part->number() != piece.number) {
            part = partOf(piece.number);
        }
        if (part) {
            take(*part, piece.span);
        }
    }
}

std::unique_ptr<RecordingPart> RecordingReader::partOf(quint64 number) const
{
    QString ignored;
    const std::vector<Member> members = membersOf(folder_);
    const auto found = std::find_if(members.begin(), members.end(), [number](const Member& member) {
        return member.number == number;
    });
    return found != members.end() ? RecordingPart::open(*found, ignored) : nullptr;
}

std::unique_ptr<RecordingPart> RecordingReader::partAt(Micros at) const
{
    std::unique_ptr<RecordingPart> best;
    Micros known = 0; // the last moment that it covers
    const std::vector<Member> members = membersOf(folder_);
    for (auto member = members.rbegin(); member != members.rend() && !(best && known == at);
         ++member) {
        if (member->began > at || (best && endOf(*member, members) <= known)) {
            continue;
        }
        QString ignored;
        std::unique_ptr<RecordingPart> part = RecordingPart::open(*member, ignored);
        if (!part || part->began() > at) {
            continue;
        }
        const Micros until = part->recordedUntil(at);
        if (!best || until > known) {
            known = until;
            best = std::move(part);
        }
    }
    return best;
}

std::unique_ptr<RecordingPart> RecordingReader::newestPart() const
{
    const std::vector<Member> members = membersOf(folder_);
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        QString ignored;
        if (std::unique_ptr<RecordingPart> part = RecordingPart::open(*member, ignored)) {
            return part;
        }
    }
    return nullptr;
}

std::vector<EventRow> RecordingReader::lastEvents(Micros at, size_t limit) const
{
    std::vector<EventRow> events;
    const std::vector<Member> members = membersOf(folder_);
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        const bool isFull = !events.empty() && events.size() >= limit;
        if (member->began > at || (isFull && endOf(*member, members) < events.front().at)) {
            continue;
        }
        QString ignored;
        const std::unique_ptr<RecordingPart> part = RecordingPart::open(*member, ignored);
        if (!part) {
            continue;
        }
        std::vector<EventRow> all = part->lastEvents(at, limit);
        std::reverse(all.begin(), all.end());
        all.insert(all.end(), events.begin(), events.end());
        std::stable_sort(all.begin(), all.end(), [](const EventRow& left, const EventRow& right) {
            return left.at < right.at;
        });
        const size_t more = all.size() > limit ? all.size() - limit : 0;
        events.assign(all.begin() + static_cast<std::ptrdiff_t>(more), all.end());
    }
    return events;
}

} // namespace tavmir::recorder
