// The live messages, each made once for all clients that need the same one.
#ifndef TAVMIR_PAGE_LIVE_MESSAGES_H
#define TAVMIR_PAGE_LIVE_MESSAGES_H

#include "greeting.h"
#include "page_content.h"

#include <map>
#include <memory>

namespace tavmir::page
{

struct LiveMessage {
    std::shared_ptr<const std::string> text; // null: there is nothing to say
    std::uint64_t sequence = 0;              // that a client has seen when it has this
};

// The server's thread.
class LiveMessages
{
public:
    // content  outlives it
    explicit LiveMessages(PageContent& content) : content_(content) {}

    // The content takes what happened; earlier messages are out of date.
    void look();

    // The first message of a client: what it has not seen, or everything where that is not known.
    LiveMessage first(const Greeting& greeting);

    // What is newer than `since`.
    LiveMessage changes(std::uint64_t since);

private:
    LiveMessage snapshot();

    PageContent& content_;
    LiveMessage snapshot_;
    std::map<std::uint64_t, LiveMessage> changes_; // by what the client has seen
};

} // namespace tavmir::page

#endif
