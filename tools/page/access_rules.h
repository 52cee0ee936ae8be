// Who may ask. A page of any other site can make a browser connect to this machine, by a name of
// its own that suddenly points here too: so only own names are answered to, only own pages may
// change or listen, and what is known is told to who has the token.
#ifndef TAVMIR_PAGE_ACCESS_RULES_H
#define TAVMIR_PAGE_ACCESS_RULES_H

#include <string>
#include <string_view>
#include <vector>

namespace tavmir::page
{

class AccessRules
{
public:
    //   address  listened on, as given: "127.0.0.1", "::1", "panel.local"
    //   isAny    it stands for all addresses of this machine
    AccessRules(const std::string& address, bool isAny, unsigned short port, std::string token);

    // A Host header's value, or the authority of a target.
    //   ownAddress  that this connection came in on, without brackets; counts where `isAny`
    bool isOwnHost(std::string_view host, std::string_view ownAddress) const;

    // An Origin header's value belongs to the page of that (own) host.
    static bool isOwnOrigin(std::string_view origin, std::string_view host);

    // An Authorization header's value: "Bearer TOKEN".
    bool isAuthorized(std::string_view authorization) const;
    bool isToken(std::string_view guess) const;

    const std::string& token() const { return token_; }
    // Where a browser on this machine finds the page, without scheme: "127.0.0.1:8080".
    const std::string& place() const { return place_; }

private:
    bool isHost(std::string_view host, std::string_view name) const;

    std::vector<std::string> names_; // of the server, with brackets where they belong
    bool isAny_;
    unsigned short port_;
    std::string token_;
    std::string place_;
};

} // namespace tavmir::page

#endif
