// An allow-list: whatever is not on it is foreign.
#include "access_rules.h"

#include "ascii_text.h"
#include "token.h"

namespace tavmir::page
{

namespace
{

constexpr unsigned short kUsualPort = 80; // may be left out

std::string inBrackets(std::string_view name)
{
    const bool isSix = name.find(':') != name.npos;
    return isSix ? "[" + std::string(name) + "]" : std::string(name);
}

} // namespace

AccessRules::AccessRules(const std::string& address, bool isAny, unsigned short port,
                         std::string token)
    : names_{"127.0.0.1", "localhost", "[::1]"}, isAny_(isAny), port_(port),
      token_(std::move(token))
{
    const std::string given = inBrackets(address);
    if (!isAny) {
        names_.push_back(given);
    }
    const char* const here = given.front() == '[' ? "[::1]" : "127.0.0.1";
    place_ = (isAny ? here : given) + ":" + std::to_string(port);
}

bool AccessRules::isHost(std::string_view host, std::string_view name) const
{
    if (!startsWithIgnoringCase(host, name)) {
        return false;
    }
    const std::string_view rest = host.substr(name.size());
    return rest == ":" + std::to_string(port_) || (rest.empty() && port_ == kUsualPort);
}

bool AccessRules::isOwnHost(std::string_view host, std::string_view ownAddress) const
{
    for (const std::string& name : names_) {
        if (isHost(host, name)) {
            return true;
        }
    }
    return isAny_ && !ownAddress.empty() && isHost(host, inBrackets(ownAddress));
}

bool AccessRules::isOwnOrigin(std::string_view origin, std::string_view host)
{
    constexpr std::string_view kScheme = "http://";
    return startsWithIgnoringCase(origin, kScheme) &&
           equalIgnoringCase(origin.substr(kScheme.size()), host);
}

bool AccessRules::isAuthorized(std::string_view authorization) const
{
    constexpr std::string_view kScheme = "Bearer ";
    return startsWithIgnoringCase(authorization, kScheme) &&
           isToken(authorization.substr(kScheme.size()));
}

bool AccessRules::isToken(std::string_view guess) const
{
    return isSameSecret(guess, token_);
}

} // namespace tavmir::page
