// The socket that the page's server listens on.
#ifndef TAVMIR_PAGE_LISTENING_H
#define TAVMIR_PAGE_LISTENING_H

#include <boost/asio/ip/tcp.hpp>

#include <string>

namespace tavmir::page
{

struct ListeningPlace {
    std::string address;     // a name or an address, without brackets
    unsigned short port = 0; // 0: any free one
    bool isWritable = false; // what is served there
};

// Listens on the first address of that name that can be; what is writable only where the name
// stands for this machine and nothing else. False: nothing has listened, and `problem` says in one
// line what stands in the way.
bool listenAt(const ListeningPlace& place, boost::asio::ip::tcp::acceptor& acceptor,
              std::string& problem);

} // namespace tavmir::page

#endif
