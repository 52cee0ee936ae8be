// Twelve tabs that keep up ask for the same changes: the text is made for the first and shared.
#include "live_messages.h"

namespace tavmir::page
{

namespace
{

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
    return changes(greeting.sequence);
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

} // namespace tavmir::page
