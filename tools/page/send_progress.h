// Until when a client must have read some more of what it is being sent.
#ifndef TAVMIR_PAGE_SEND_PROGRESS_H
#define TAVMIR_PAGE_SEND_PROGRESS_H

#include "page_limits.h"
#include "session.h"

namespace tavmir::page
{

// What is sent goes out in pieces of this size at most, so that it shows whether the client reads.
constexpr std::size_t kPieceBytes = 64 * 1024;

inline Clock::time_point sendDeadline(const PageLimits& limits, std::size_t unread)
{
    return Clock::now() + (unread > limits.unreadBytes ? limits.unreadTime : limits.sendTime);
}

} // namespace tavmir::page

#endif
