// Twelve tabs that keep up ask for the same changes: the text is made for the first and shared.
#include "live_messages.h"

#include <chrono>

namespace tavmir::page
{

namespace
{

std::string wallClockMs()
{
    using std::chrono::duration_cast;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::to_string(duration_cast<std::chrono::milliseconds>(now).count());
}

LiveMessage messageOf(std::string text, std::uint64_t sequence)
{
    LiveMessage message;
    message.sequence = sequence;
    if (!text.empty()) {
        message.text = std::make_shared<const std::string>(std::move(text));
    }
    return message;
}

} // namespace

void LiveMessages::look()
{
    content_.look();
    snapshot_ = LiveMessage();
    changes_.clear();
}

LiveMessage LiveMessages::first(const Greeting& greeting)
{
    if (greeting.epoch != content_.epoch() || greeting.sequence > content_.sequence()) {
        return snapshot();
    }
    LiveMessage message = changes(greeting.sequence);
    return message.text ? message : alive(greeting.sequence);
}

LiveMessage LiveMessages::snapshot()
{
    if (!snapshot_.text) {
        std::string text = content_.snapshot();
        snapshot_ = messageOf(std::move(text), content_.sequence());
    }
    return snapshot_;
}

LiveMessage LiveMessages::changes(std::uint64_t since)
{
    const auto known = changes_.find(since);
    if (known != changes_.end()) {
        return known->second;
    }
    std::string text = content_.changes(since, since);
    return changes_[since] = messageOf(std::move(text), content_.sequence());
}

LiveMessage LiveMessages::alive(std::uint64_t since) const
{
    return messageOf("{\"kind\":\"alive\",\"epoch\":\"" + content_.epoch() + "\",\"sequence\":" +
                         std::to_string(since) + ",\"now\":" + wallClockMs() + "}",
                     since);
}

} // namespace tavmir::page
