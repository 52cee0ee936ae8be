// What becomes of a request, decided by its head alone, in this order: whose name it was sent to,
// what it is for, whose page sends it, who has the token. A body is read only of what passes.
#ifndef TAVMIR_PAGE_REQUEST_RULES_H
#define TAVMIR_PAGE_REQUEST_RULES_H

#include "access_rules.h"
#include "built_in_assets.h"
#include "page_content.h"

namespace tavmir::page
{

struct RequestHead {
    std::string_view method;
    std::string_view target;
    std::vector<std::string_view> hosts;   // each Host header
    std::vector<std::string_view> origins; // each Origin header
    std::string_view authorization;
    std::string_view contentType;
    std::string_view expect;
    bool isUpgrade = false; // asks for a WebSocket
    bool hasBody = false;
    bool isTooLong = false; // its body is announced to be longer than allowed
};

enum class Route { refuse, asset, question, order, live };

struct Decision {
    Route route = Route::refuse;
    Answer refusal;
    const char* allow = ""; // with a refusal by 405
    const Asset* asset = nullptr;
    std::string what; // of a question or an order
    Query query;
};

//   ownAddress  that the connection came in on, without brackets
Decision decide(const RequestHead& head, const AccessRules& rules, const Assets& assets,
                std::string_view ownAddress);

} // namespace tavmir::page

#endif
