// Bytes become requests, then every room of rules sees every event.
#include "judge.h"

namespace tavmir::judge
{

void Judge::take(const Event& event)
{
    switch (event.kind) {
    case Event::Kind::received:
        for (const Event& made : streams_[event.client].take(event)) {
            dispatch(made);
        }
        return;
    case Event::Kind::tick:
        tick(event);
        return;
    case Event::Kind::closedByHost:
        for (const Event& made : streams_[event.client].close(event.at, event.client)) {
            dispatch(made);
        }
        streams_.erase(event.client);
        break;
    case Event::Kind::closedByController:
        streams_.erase(event.client);
        break;
    default:
        break;
    }
    setScene(event);
    dispatch(event);
}

void Judge::setScene(const Event& event)
{
    if (event.kind == Event::Kind::begins) {
        scene_.situation = event.situation;
        scene_.isPlaying = true;
    } else if (event.kind == Event::Kind::ends) {
        scene_.isPlaying = false;
    }
}

void Judge::tick(const Event& event)
{
    for (auto& [client, stream] : streams_) {
        for (const Event& made : stream.tick(event.at, client)) {
            dispatch(made);
        }
    }
    dispatch(event);
}

void Judge::dispatch(const Event& event)
{
    frames_.take(event);
    exchanges_.take(event);
    connections_.take(event);
    polling_.take(event);
    writes_.take(event);
}

} // namespace tavmir::judge
