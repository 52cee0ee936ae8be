// The page's server: HTTP and WebSocket on one port, on one thread of its own. Serves the files of
// the page, hands questions to the content, and sends each live client the latest that it has not
// seen.
//
//   PageServer(content, options) ─▶ start ─▶ port(), url() … ─▶ stop
//
// Safe by default: it answers only to names of its own, only to pages of its own, and what it knows
// only to who has its token. A client that is slow, silent or malicious costs bounded memory and
// time, and holds up no other.
#ifndef TAVMIR_PAGE_PAGE_SERVER_H
#define TAVMIR_PAGE_PAGE_SERVER_H

#include "built_in_assets.h"
#include "page_content.h"
#include "page_limits.h"

#include <memory>
#include <string>

namespace tavmir::page
{

struct PageServerOptions {
    std::string address = "127.0.0.1"; // a name or an address, without brackets
    unsigned short port = 0;           // 0: any free one
    bool isWritable = false;           // then it listens on loopback or not at all
    std::string token;                 // empty: start() makes one of 128 bits
    const Assets* assets = nullptr;    // null: the built-in ones; they outlive the server
    PageLimits limits;
};

class PageServer
{
public:
    // content  outlives the server
    PageServer(PageContent& content, PageServerOptions options);
    // Stops it.
    ~PageServer();
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;

    // Once. False: it does not listen, and `problem` says in one line what stands in the way, for
    // example "127.0.0.1:8080 cannot be listened on: Address already in use".
    bool start(std::string& problem);

    // These from any thread, after a start() that went well.
    unsigned short port() const;
    const std::string& token() const; // 32 hexadecimal digits
    std::string url() const;          // "http://127.0.0.1:8080/#token=…"
    // Connections that are open now.
    int clients() const;

    // Ends the connections and the thread, promptly also with open clients: live ones are told that
    // the program goes. Afterwards the content is not called any more. Any thread but the server's
    // own; a second call does nothing.
    void stop();

private:
    class Impl;

    std::unique_ptr<Impl> impl_;
};

} // namespace tavmir::page

#endif
