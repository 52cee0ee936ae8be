// Exchanges of a pass.
#include "pass_check.h"

#include "wire/frame_words.h"

namespace tavmir::host
{

CheckAnswer answerOf(const Exchange& exchange)
{
    CheckAnswer answer;
    answer.ms =
        std::chrono::duration<double, std::milli>(exchange.endedAt - exchange.sentAt).count();
    if (exchange.isGood()) {
        answer.end = CheckEnd::answered;
        return answer;
    }
    answer.why = endInWords(exchange, QString());
    switch (exchange.end) {
    case ExchangeEnd::exception:
        answer.end = CheckEnd::refused;
        answer.code = exchange.exceptionCode;
        answer.why = "refused, code " + QString::fromStdString(wire::exceptionInWords(answer.code));
        break;
    case ExchangeEnd::notSent:
    case ExchangeEnd::suppressed:
    case ExchangeEnd::stopped:
        answer.ms = 0;
        break;
    default:
        answer.end = CheckEnd::noAnswer;
        break;
    }
    return answer;
}

PassCheck::PassCheck(const std::vector<PolledElement>& polled) : variables_(polled.size())
{
    for (size_t i = 0; i < polled.size(); ++i) {
        for (const WireElement& element : wireElements(polled[i].element, polled[i].station)) {
            users_[element].push_back(i);
        }
    }
}

bool PassCheck::take(const FeedEntry& entry)
{
    if (entry.kind == FeedKind::exchange && entry.exchange.kind == RequestKind::poll) {
        if (entry.exchange.attempt == 1) {
            begin(entry.exchange);
        }
        last_ = answerOf(entry.exchange);
        if (last_.end == CheckEnd::answered) {
            end();
            return true;
        }
    } else if (entry.kind == FeedKind::gaveUp && isUnderWay_) {
        end();
        return true;
    }
    return false;
}

void PassCheck::begin(const Exchange& exchange)
{
    isUnderWay_ = true;
    ++requests_;
    asked_.clear();
    station_ = exchange.request[wire::kStationOffset];
    const wire::FunctionCode* function =
        wire::findFunctionCode(exchange.request[wire::kFunctionOffset]);
    const size_t count = exchange.request[wire::kCountOffset];
    for (size_t i = 0; function != nullptr && i < count; ++i) {
        const unsigned char* entry =
            exchange.request + wire::kHeaderBytes + i * wire::kAddressBytes;
        const WireElement element{function->elements, static_cast<qint32>(wire::bigEndian32(entry)),
                                  static_cast<quint8>(station_)};
        const auto users = users_.find(element);
        // The last request of a pass goes on with the list's head.
        if (users == users_.end() || !seen_.insert(element).second) {
            continue;
        }
        for (const size_t user : users->second) {
            asked_.insert(user);
            if (variables_[user].request == 0) {
                variables_[user].request = requests_;
                variables_[user].sharing = static_cast<int>(count);
                variables_[user].answer.end =
                    CheckEnd::answered; // until one of its requests is not
            }
        }
    }
}

void PassCheck::end()
{
    isUnderWay_ = false;
    for (const size_t variable : asked_) {
        CheckAnswer& answer = variables_[variable].answer;
        if (answer.end == CheckEnd::answered) {
            answer = last_;
        }
    }
}

} // namespace tavmir::host
