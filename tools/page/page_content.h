// What a page shows, for a server that knows nothing of it: answers to questions by name, and live
// messages of what has changed. The bodies are JSON texts, which the server passes on unread.
#ifndef TAVMIR_PAGE_PAGE_CONTENT_H
#define TAVMIR_PAGE_PAGE_CONTENT_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavmir::page
{

// What stands behind the "?" of an address, decoded, UTF-8, in its order.
struct Query {
    std::vector<std::pair<std::string, std::string>> items;

    // The first value of that name; null: there is none. Valid as long as the query is unchanged.
    const std::string* find(const char* name) const;
};

struct Answer {
    unsigned status = 200; // of HTTP
    std::string type = "application/json";
    std::string body;
    std::string fileName;               // not empty: the browser saves the body under this name
    std::optional<long long> coveredMs; // of time, where that is less than was asked for
};

// All calls on the server's thread, one at a time. None may block: a call that takes long holds up
// every client. What get(), ask() and post() throw is answered by 500; the others throw nothing.
class PageContent
{
public:
    virtual ~PageContent();

    // GET /api/v1/WHAT, for example "status", "variables". What it does not know: status 404.
    virtual Answer get(const std::string& what, const Query& query) = 0;

    // Called once, from any thread; may come later or before ask() or post() return, and also when
    // client or server have gone.
    using Done = std::function<void(Answer)>;

    // The same as get(), of a content that finds some answers on a thread of its own.
    virtual void ask(const std::string& what, const Query& query, Done done);

    // POST /api/v1/WHAT: "write", "replay".
    //   body  JSON text by its type, not looked at; 64 KiB at most
    virtual void post(const std::string& what, const std::string& body, Done done) = 0;

    // Ten times a second while anybody listens, else once a second: take what happened.
    virtual void look() = 0;

    // Forty times a second, whether anybody listens or not: for who must not fall behind.
    virtual void keepUp() {}

    // A new one for each start of the program.
    virtual std::string epoch() const = 0;

    // Counts looks that changed something; what ages changes once a second, so that each client
    // hears of the program as often.
    virtual std::uint64_t sequence() const = 0;

    // Everything, as a live message.
    virtual std::string snapshot() = 0;

    // What is newer, the latest value each, as a live message; empty: nothing.
    //   since        a sequence() that the client has seen
    //   eventsSince  the same, of events
    virtual std::string changes(std::uint64_t since, std::uint64_t eventsSince) = 0;
};

} // namespace tavmir::page

#endif
