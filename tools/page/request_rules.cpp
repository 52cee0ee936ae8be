// The order of the checks is part of what they promise: a foreign name learns nothing.
#include "request_rules.h"

#include "ascii_text.h"
#include "http_answers.h"
#include "query.h"

namespace tavmir::page
{

namespace
{

constexpr std::string_view kApi = "/api/";
constexpr std::string_view kVersion = "/api/v1/";
constexpr std::string_view kLive = "live";

Decision refuse(unsigned status, std::string_view text, const char* allow = "")
{
    Decision decision;
    decision.refusal = errorAnswer(status, text);
    decision.allow = allow;
    return decision;
}

bool isOwnOrNoOrigin(const RequestHead& head)
{
    return head.origins.empty() ||
           (head.origins.size() == 1 &&
            AccessRules::isOwnOrigin(head.origins.front(), head.hosts.front()));
}

bool isJson(std::string_view type)
{
    type = type.substr(0, type.find(';'));
    while (!type.empty() && (type.back() == ' ' || type.back() == '\t')) {
        type.remove_suffix(1);
    }
    return equalIgnoringCase(type, "application/json");
}

Decision decideAsset(const RequestHead& head, const Assets& assets, const std::string& path)
{
    const bool isQuestion = head.method == "GET" || head.method == "HEAD";
    for (const Asset& asset : assets) {
        if (asset.path != path) {
            continue;
        }
        if (!isQuestion) {
            return refuse(405, "this is only to be read", "GET, HEAD");
        }
        Decision decision;
        decision.route = Route::asset;
        decision.asset = &asset;
        return decision;
    }
    return isQuestion ? refuse(404, "there is no such file")
                      : refuse(405, "there are no orders here", "GET, HEAD");
}

Decision decideLive(const RequestHead& head)
{
    if (head.method != "GET") {
        return refuse(405, "this is a WebSocket", "GET");
    }
    if (!head.isUpgrade) {
        return refuse(400, "this is a WebSocket");
    }
    if (!isOwnOrNoOrigin(head)) {
        return refuse(403, "another site's page may not listen");
    }
    Decision decision;
    decision.route = Route::live;
    return decision;
}

Decision decideApi(const RequestHead& head, const AccessRules& rules, Target& target)
{
    const bool isOrder = head.method == "POST";
    if (!isOrder && head.method != "GET" && head.method != "HEAD") {
        return refuse(405, "only GET, HEAD and POST are known", "GET, HEAD, POST");
    }
    if (isOrder && !isOwnOrNoOrigin(head)) {
        return refuse(403, "another site's page may not give orders");
    }
    if (!rules.isAuthorized(head.authorization)) {
        return refuse(401, "the token of this start is missing or wrong");
    }
    if (target.path.compare(0, kVersion.size(), kVersion) != 0) {
        return refuse(404, "there is no such thing");
    }
    if (isOrder && !isJson(head.contentType)) {
        return refuse(415, "an order is application/json");
    }
    Decision decision;
    decision.route = isOrder ? Route::order : Route::question;
    decision.what = target.path.substr(kVersion.size());
    decision.query = std::move(target.query);
    return decision;
}

// As far as the target alone tells.
Decision route(const RequestHead& head, const AccessRules& rules, const Assets& assets,
               Target& target)
{
    if (target.path == std::string(kVersion).append(kLive)) {
        return decideLive(head);
    }
    if (head.isUpgrade) {
        return refuse(400, "there is no WebSocket here");
    }
    if (target.path.compare(0, kApi.size(), kApi) == 0) {
        return decideApi(head, rules, target);
    }
    return decideAsset(head, assets, target.path);
}

} // namespace

Decision decide(const RequestHead& head, const AccessRules& rules, const Assets& assets,
                std::string_view ownAddress)
{
    if (head.hosts.size() != 1) {
        return refuse(400, head.hosts.empty() ? "the Host header is missing"
                                              : "there is more than one Host header");
    }
    if (!rules.isOwnHost(head.hosts.front(), ownAddress)) {
        return refuse(421, "this server has another name");
    }
    if (head.method == "OPTIONS") {
        return refuse(405, "only GET, HEAD and POST are known", "GET, HEAD, POST");
    }
    Target target;
    if (!readTarget(head.target, target)) {
        return refuse(400, "the address cannot be read");
    }
    if (!target.authority.empty() && !rules.isOwnHost(target.authority, ownAddress)) {
        return refuse(421, "this server has another name");
    }
    Decision decision = route(head, rules, assets, target);
    if (decision.route == Route::refuse) {
        return decision;
    }
    if (head.hasBody && decision.route != Route::order) {
        return refuse(400, "only a POST has a body");
    }
    if (head.isTooLong) {
        return refuse(413, "the body is too long");
    }
    if (!head.expect.empty() && !equalIgnoringCase(head.expect, "100-continue")) {
        return refuse(417, "only 100-continue can be expected");
    }
    return decision;
}

} // namespace tavmir::page
