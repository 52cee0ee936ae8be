// The addresses of a name, looked at before any is listened on.
#include "listening.h"

#include <algorithm>

namespace tavmir::page
{

namespace
{

using boost::asio::ip::tcp;
using Error = boost::system::error_code;

std::string textOf(const ListeningPlace& place)
{
    const bool isSix = place.address.find(':') != place.address.npos;
    return (isSix ? "[" + place.address + "]" : place.address) + ":" + std::to_string(place.port);
}

bool reachBeyondThisMachine(const tcp::resolver::results_type& addresses)
{
    return std::any_of(addresses.begin(), addresses.end(),
                       [](const auto& entry) { return !entry.endpoint().address().is_loopback(); });
}

Error listenOn(const tcp::endpoint& endpoint, tcp::acceptor& acceptor)
{
    Error error;
    tcp::acceptor opened(acceptor.get_executor());
    opened.open(endpoint.protocol(), error);
    if (!error) {
        opened.set_option(tcp::acceptor::reuse_address(true), error);
    }
    if (!error) {
        opened.bind(endpoint, error);
    }
    if (!error) {
        opened.listen(tcp::acceptor::max_listen_connections, error);
    }
    if (!error) {
        acceptor = std::move(opened);
    }
    return error;
}

} // namespace

bool listenAt(const ListeningPlace& place, tcp::acceptor& acceptor, std::string& problem)
{
    Error error;
    const auto addresses =
        tcp::resolver(acceptor.get_executor())
            .resolve(place.address, std::to_string(place.port),
                     tcp::resolver::passive | tcp::resolver::numeric_service, error);
    if (place.isWritable && reachBeyondThisMachine(addresses)) {
        problem = textOf(place) + " is beyond this machine, and such a page is never writable; a "
                                  "tunnel to this machine is the way";
        return false;
    }
    for (const auto& entry : addresses) {
        error = listenOn(entry.endpoint(), acceptor);
        if (!error) {
            return true;
        }
    }
    problem = textOf(place) + " cannot be listened on: " + error.message();
    return false;
}

} // namespace tavmir::page
