// From frames to troubles.
#include "conversation.h"

#include "exchange_fold.h"
#include "rhythm.h"

#include <algorithm>

namespace tavmir::diagnose
{

namespace
{

// How long a reply is waited for before its exchange is looked at.
constexpr Nanoseconds kMostLate = 30 * kSecond;
constexpr std::size_t kMostKept = 30000; // exchanges
constexpr int kMostLookedBack = 10;      // attempts

// An attempt that ends with the capture, or with the host, counts when it had waited for so long.
constexpr Nanoseconds kLongWait = 100 * kMillisecond;
constexpr Nanoseconds kLongConnect = kSecond;

Nanoseconds medianOf(std::vector<Nanoseconds> times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// A reply with the number of an exchange that is long over, one bit from that of the one that
// waits.
bool isDamagedNumber(const Exchange& over, const Exchange& waiting, Nanoseconds at)
{
    const int differing = over.view().transactionId ^ waiting.view().transactionId;
    return over.came.size() >= over.attempts.size() && at - over.came.back().at > kLongWait &&
           (differing & (differing - 1)) == 0;
}

const char* how(bool isReset)
{
    return isReset ? " (RST)" : " (FIN)";
}

} // namespace

Happening& Conversation::happen(Trouble trouble, Nanoseconds at)
{
    happenings_.push_back({trouble, at});
    return happenings_.back();
}

Happening& Conversation::happen(Trouble trouble, Nanoseconds at, const Exchange& exchange,
                                const Attempt& attempt)
{
    Happening& happening = happen(trouble, at);
    happening.ordinal = attempt.ordinal;
    happening.request = exchange.requestNumber;
    happening.transaction = exchange.view().transactionId;
    happening.words = attempt.words;
    return happening;
}

// Connections

void Conversation::asked(Number connection, Nanoseconds at)
{
    if (opening_.isAsked && !opening_.isConnected && !opening_.isClosed) {
        tellSilentConnect(at);
    }
    opening_ = {connection, at, true, false, false};
    latestSaid_ = at;
}

void Conversation::connected(Number connection, Nanoseconds at)
{
    if (opening_.connection != connection || opening_.isConnected) {
        return;
    }
    opening_.isConnected = true;
    isOpen_ = true;
    ++counts_.connections;
    isBlind_ = false;
    latestSaid_ = at;
    tellReconnect(at);
}

void Conversation::tellReconnect(Nanoseconds at)
{
    if (isLost_) {
        Attempt& attempt = exchanges_.back().attempts.back();
        attempt.words += "; connected again " + durationInWords(at - attempt.endedAt) + " later";
    }
    isLost_ = false;
    if (latestClosing_ != kNoRequest) {
        Happening& closing = happenings_[latestClosing_];
        closing.words += "; connected again " + durationInWords(at - closing.at) + " later";
        latestClosing_ = kNoRequest;
    }
}

void Conversation::foundOpen(Number connection)
{
    opening_ = {connection, 0, false, true, false};
    isOpen_ = true;
    isBlind_ = true;
    ++counts_.connections;
}

void Conversation::closed(Number connection, Nanoseconds at, bool byHost, bool isReset)
{
    if (opening_.connection != connection || opening_.isClosed) {
        return;
    }
    opening_.isClosed = true;
    isOpen_ = false;
    if (!opening_.isConnected) {
        if (!byHost) {
            happen(Trouble::refusedConnect, at).words =
                "refused after " + durationInWords(at - opening_.askedAt);
        }
        return;
    }
    Attempt* attempt = openAttempt(connection);
    if (byHost) {
        ++counts_.closedByHost;
        endAttempt(AttemptEnd::hostClosed, at, std::string());
        return;
    }
    const std::string words = std::string("the controller closed") + how(isReset) + " ";
    if (attempt != nullptr) {
        const std::string after = words + durationInWords(at - attempt->at) + " after the request";
        endAttempt(AttemptEnd::lost, at, after);
        isLost_ = true;
        return;
    }
    happen(Trouble::closedIdle, at).words =
        words + durationInWords(at - latestSaid_) + " after the last frame";
    latestClosing_ = happenings_.size() - 1;
}

void Conversation::tellSilentConnect(Nanoseconds at)
{
    happen(Trouble::silentConnect, opening_.askedAt).words =
        "no answer for " + durationInWords(at - opening_.askedAt);
}

void Conversation::over(Number connection, Nanoseconds at)
{
    if (opening_.connection != connection) {
        return;
    }
    isOpen_ = false;
    if (opening_.isAsked && !opening_.isConnected && !opening_.isClosed &&
        at - opening_.askedAt > kLongConnect) {
        tellSilentConnect(at);
    }
}

// Attempts

Exchange* Conversation::waitingExchange()
{
    if (exchanges_.empty() || exchanges_.back().attempts.back().end != AttemptEnd::open ||
        exchanges_.back().isAnswered) {
        return nullptr;
    }
    return &exchanges_.back();
}

Exchange* Conversation::exchangeOf(std::uint16_t transaction)
{
    const auto found = latest_.find(transaction);
    return found != latest_.end() && found->second > folded_
               ? &exchanges_[static_cast<std::size_t>(found->second - folded_ - 1)]
               : nullptr;
}

// The one that waits on the connection, nothing having come for it.
Attempt* Conversation::openAttempt(Number connection)
{
    Exchange* exchange = waitingExchange();
    if (exchange == nullptr) {
        return nullptr;
    }
    Attempt& attempt = exchange->attempts.back();
    const bool hasCome = !exchange->came.empty() && exchange->came.back().behind == attempt.ordinal;
    return attempt.connection == connection && !hasCome ? &attempt : nullptr;
}

// The latest one on the connection that was sent by then; looks at the last few.
Attempt* Conversation::attemptBefore(Number connection, Nanoseconds at)
{
    int left = kMostLookedBack;
    for (auto exchange = exchanges_.rbegin(); exchange != exchanges_.rend(); ++exchange) {
        for (auto attempt = exchange->attempts.rbegin(); attempt != exchange->attempts.rend();
             ++attempt) {
            if (attempt->connection == connection && attempt->at <= at) {
                return &*attempt;
            }
            if (--left == 0) {
                return nullptr;
            }
        }
    }
    return nullptr;
}

void Conversation::endAttempt(AttemptEnd end, Nanoseconds at, const std::string& words)
{
    if (exchanges_.empty() || exchanges_.back().attempts.back().end != AttemptEnd::open) {
        return;
    }
    Attempt& attempt = exchanges_.back().attempts.back();
    attempt.end = end;
    attempt.endedAt = at;
    attempt.words = words;
}

void Conversation::addAttempt(Exchange& exchange, Number connection, Nanoseconds at)
{
    Attempt attempt;
    attempt.at = at;
    attempt.ordinal = ++counts_.attempts;
    attempt.connection = connection;
    exchange.attempts.push_back(attempt);
}

// Frames

void Conversation::request(Number connection, const Piece& frame)
{
    const wire::FrameView view = wire::viewFrame(frame.bytes.data(), frame.bytes.size());
    const std::string problem = requestProblem(view);
    speaks_ = speaks_ || problem.empty();
    isBlind_ = false;
    latestSaid_ = frame.at;
    endAttempt(AttemptEnd::wentOn, frame.at, std::string());
    foldOld(frame.at);
    const bool isRepetition = !exchanges_.empty() && !exchanges_.back().isAnswered &&
                              exchanges_.back().request == frame.bytes;
    if (!isRepetition) {
        Exchange exchange;
        exchange.request = frame.bytes;
        exchange.requestNumber = table_.numberOf(frame.bytes);
        exchanges_.push_back(exchange);
        latest_[view.transactionId] = folded_ + exchanges_.size();
        ++counts_.requests;
    }
    Exchange& exchange = exchanges_.back();
    addAttempt(exchange, connection, frame.at);
    if (!problem.empty()) {
        happen(Trouble::badRequest, frame.at, exchange, exchange.attempts.back()).words = problem;
    }
}

void Conversation::reply(Number connection, const Piece& frame)
{
    const wire::FrameView view = wire::viewFrame(frame.bytes.data(), frame.bytes.size());
    speaks_ = speaks_ || isWholeReply(frame.bytes.data(), frame.bytes.size());
    latestSaid_ = frame.at;
    Exchange* exchange = exchangeOf(view.transactionId);
    Exchange* waiting = waitingExchange();
    const bool fitsWaiting = waiting != nullptr && waiting != exchange &&
                             waiting->attempts.back().connection == connection &&
                             checkReply(waiting->view(), view).is != CheckedReply::Is::wrong;
    if (fitsWaiting && (exchange == nullptr || isDamagedNumber(*exchange, *waiting, frame.at))) {
        attach(*waiting, frame,
               {CheckedReply::Is::wrong, Trouble::wrongTransaction,
                std::to_string(view.transactionId) + " instead of " +
                    std::to_string(waiting->view().transactionId)});
        return;
    }
    if (exchange != nullptr) {
        attach(*exchange, frame, checkReply(exchange->view(), view));
        return;
    }
    if (isBlind_) {
        ++counts_.unjudged;
        return;
    }
    Happening& happening = happen(Trouble::unasked, frame.at);
    happening.transaction = view.transactionId;
    happening.words = wire::titleInWords(view);
}

void Conversation::attach(Exchange& exchange, const Piece& frame, const CheckedReply& checked)
{
    exchange.came.push_back({frame.at, frame.bytes, checked, counts_.attempts});
    const bool isLast = &exchange == &exchanges_.back();
    exchange.isAnswered = exchange.isAnswered || (isLast && checked.is == CheckedReply::Is::answer);
}

void Conversation::damaged(Number connection, bool byHost, const Piece& piece)
{
    const bool isPart = piece.kind == Piece::Kind::part;
    const AttemptEnd end = isPart ? AttemptEnd::cut : AttemptEnd::noFrame;
    Attempt* attempt = byHost ? nullptr : openAttempt(connection);
    if (attempt != nullptr && attempt->at <= piece.at) {
        endAttempt(end, piece.at, piece.words);
        return;
    }
    // Its rest did not come while the host waited, as only the reply to the next request shows.
    attempt = byHost ? nullptr : attemptBefore(connection, piece.at);
    if (attempt != nullptr && attempt->end == AttemptEnd::wentOn) {
        attempt->end = end;
        attempt->endedAt = piece.at;
        attempt->words = piece.words;
        return;
    }
    const Trouble trouble = byHost ? Trouble::badRequest : isPart ? Trouble::cut : Trouble::noFrame;
    happen(trouble, piece.at).words = piece.words;
}

void Conversation::lacks(bool byHost, std::uint64_t bytes)
{
    counts_.lacking += bytes;
    isBlind_ = isBlind_ || byHost;
    if (waitingExchange() != nullptr) {
        exchanges_.back().attempts.back().end = AttemptEnd::unjudged;
    }
}

// Exchanges that are over

void Conversation::foldOld(Nanoseconds now)
{
    while (!exchanges_.empty() &&
           (exchanges_.size() > kMostKept ||
            (exchanges_.size() > 1 && exchanges_.front().attempts.back().at < now - kMostLate))) {
        foldFirst();
    }
}

void Conversation::foldFirst()
{
    const Exchange& exchange = exchanges_.front();
    const AttemptEnd end = exchange.attempts.back().end;
    const bool isUnfinished = end == AttemptEnd::open || end == AttemptEnd::hostClosed;
    if (isUnfinished && pairUp(exchange).replyOf.back() == kNothing) {
        unfinished_.push_back(exchange);
    } else {
        fold(exchange);
    }
    exchanges_.pop_front();
    ++folded_;
}

void Conversation::fold(const Exchange& exchange)
{
    const Pairing pairing = pairUp(exchange);
    for (const std::size_t number : pairing.duplicates) {
        Happening& happening = happen(Trouble::duplicate, exchange.came[number].at, exchange,
                                      exchange.attempts.back());
        happening.words = number == 0
                              ? std::string()
                              : durationInWords(happening.at - exchange.came[number - 1].at) +
                                    " behind the reply before it";
    }
    auto outcome = ElementBook::Outcome::none;
    std::uint8_t code = 0;
    bool isJudged = true;
    for (std::size_t i = 0; i < exchange.attempts.size(); ++i) {
        const Attempt& attempt = exchange.attempts[i];
        const std::size_t number = pairing.replyOf[i];
        if (number != kNothing) {
            foldReply(exchange, attempt, exchange.came[number], outcome, code);
        } else if (attempt.end == AttemptEnd::unjudged) {
            ++counts_.unjudged;
            isJudged = false;
        } else {
            foldSilence(exchange, attempt);
        }
    }
    if (outcome != ElementBook::Outcome::none || isJudged) {
        book_.add(exchange, outcome, code);
    }
    const wire::FunctionCode* function = wire::findFunctionCode(exchange.view().function);
    if (function != nullptr && function->write && outcome != ElementBook::Outcome::refused) {
        values_.written(exchange, outcome == ElementBook::Outcome::answered,
                        exchange.came.empty() ? exchange.attempts.back().at
                                              : exchange.came.back().at);
    }
}

void Conversation::foldReply(const Exchange& exchange, const Attempt& attempt, const Came& reply,
                             ElementBook::Outcome& outcome, std::uint8_t& code)
{
    const Nanoseconds lasted = reply.at - attempt.at;
    switch (reply.checked.is) {
    case CheckedReply::Is::wrong:
        happen(reply.checked.trouble, reply.at, exchange, attempt).words = reply.checked.words;
        return;
    case CheckedReply::Is::exception:
        code = reply.bytes[wire::kCountOffset];
        outcome = ElementBook::Outcome::refused;
        happen(Trouble::exception, reply.at, exchange, attempt).code = code;
        return;
    case CheckedReply::Is::answer:
        break;
    }
    ++counts_.replies;
    outcome = ElementBook::Outcome::answered;
    values_.read(exchange, attempt, reply);
    if (!cameLate(attempt, reply)) {
        roundTrips_.push_back({attempt.at, lasted, attempt.ordinal, exchange.requestNumber,
                               exchange.view().transactionId});
        return;
    }
    Happening& happening = happen(Trouble::late, reply.at, exchange, attempt);
    happening.lasted = lasted;
    happening.words = durationInWords(lasted) + " after the request, ";
    if (nothingCameDuring(exchange, attempt)) {
        waits_.push_back(attempt.endedAt - attempt.at);
        happening.words += "for which the host waited " + durationInWords(waits_.back());
    } else {
        happening.words += "when the host had taken the reply to an earlier attempt";
    }
}

void Conversation::foldSilence(const Exchange& exchange, const Attempt& attempt)
{
    switch (attempt.end) {
    case AttemptEnd::cut:
        happen(Trouble::cut, attempt.endedAt, exchange, attempt);
        return;
    case AttemptEnd::noFrame:
        happen(Trouble::noFrame, attempt.endedAt, exchange, attempt);
        return;
    case AttemptEnd::lost:
        happen(Trouble::lost, attempt.endedAt, exchange, attempt);
        return;
    default:
        break;
    }
    const Nanoseconds waited = attempt.endedAt - attempt.at;
    if (attempt.end == AttemptEnd::wentOn) {
        waits_.push_back(waited);
    }
    happen(Trouble::unanswered, attempt.at, exchange, attempt).words =
        "nothing came for " + durationInWords(waited);
}

void Conversation::judgeUnfinished(Exchange exchange)
{
    Attempt& attempt = exchange.attempts.back();
    const Nanoseconds limit = waits_.empty() ? kLongWait : medianOf(waits_) * 9 / 10;
    if (attempt.endedAt - attempt.at < limit) {
        attempt.end = AttemptEnd::unjudged;
        ++counts_.waiting;
    }
    fold(exchange);
}

void Conversation::tellValues()
{
    const auto tell = [this](Trouble trouble, const Sighting& sighting) {
        Happening& happening = happen(trouble, sighting.at);
        happening.ordinal = sighting.ordinal;
        happening.request = sighting.requestNumber;
        happening.transaction = sighting.transaction;
        happening.place = sighting.place;
        happening.expected = sighting.other;
    };
    for (const Sighting& sighting : values_.thatStandOut()) {
        tell(Trouble::standsOut, sighting);
    }
    for (const Sighting& sighting : values_.readOtherwise()) {
        tell(Trouble::readOtherwise, sighting);
    }
}

void Conversation::finish(Nanoseconds at)
{
    if (!exchanges_.empty() && exchanges_.back().attempts.back().end == AttemptEnd::open) {
        exchanges_.back().attempts.back().endedAt = at;
    }
    while (!exchanges_.empty()) {
        foldFirst();
    }
    for (Exchange& exchange : unfinished_) {
        judgeUnfinished(std::move(exchange));
    }
    unfinished_.clear();
    tellValues();
    std::stable_sort(happenings_.begin(), happenings_.end(),
                     [](const Happening& a, const Happening& b) { return a.at < b.at; });
}

} // namespace tavmir::diagnose
