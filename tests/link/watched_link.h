// A link with its figures beside it, for tests that run a link without a session.
#ifndef TAVMIR_TESTS_LINK_WATCHED_LINK_H
#define TAVMIR_TESTS_LINK_WATCHED_LINK_H

#include "feed/line_figures.h"
#include "link/tcp_link.h"

#include <atomic>
#include <vector>

namespace tavmir::host
{

class WatchedLink
{
public:
    explicit WatchedLink(const LinkOptions& options)
        : link(options, [this](const FeedEntry& entry) {
              figures.take(entry);
              told.push_back(entry);
              connects = static_cast<int>(figures.connects);
          })
    {
    }

    // Sends and waits; what came is in `reply` when something did.
    ExchangeEnd exchange(const QByteArray& request, QByteArray& reply)
    {
        FeedEntry entry;
        link.exchange(request.constData(), static_cast<size_t>(request.size()), reply,
                      entry.exchange);
        copyExchange(entry.exchange, request.constData(), reply.constData(), last);
        last.expectedReply = last.replySize;
        entry.exchange = last;
        figures.take(entry);
        return last.end;
    }

    LineFigures figures;
    std::vector<FeedEntry> told;  // by the link
    std::atomic<int> connects{0}; // for other threads
    Exchange last;
    TcpLink link;
};

} // namespace tavmir::host

#endif
