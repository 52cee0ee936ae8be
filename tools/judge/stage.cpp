// One function a family of plays.
#include "stage.h"

#include "wrong_replies.h"

namespace tavmir::judge
{

namespace
{

Reply natureOf(const Bytes& right)
{
    const bool refuses = right.size() > wire::kFunctionOffset &&
                         (right[wire::kFunctionOffset] & wire::kExceptionBit) != 0;
    return refuses ? Reply::exception : Reply::right;
}

Act says(const Bytes& right, Us after = 0)
{
    Act act;
    if (!right.empty()) {
        act.says.push_back({after, right, natureOf(right)});
    }
    return act;
}

bool isWrite(const Bytes& request)
{
    const wire::FunctionCode* function = wire::findFunctionCode(request[wire::kFunctionOffset]);
    return function != nullptr && function->write;
}

} // namespace

void Stage::begin(const Situation& situation)
{
    end();
    situation_ = situation;
}

void Stage::end()
{
    situation_ = Situation();
    happened_ = 0;
    matching_ = 0;
    refused_.clear();
    step_ = Step::none;
}

void Stage::closed(int client)
{
    if (client == client_) {
        step_ = Step::none;
        last_.clear();
    }
}

bool Stage::isHit(const Bytes& request, bool isNew)
{
    const bool isWanted =
        situation_.of == Whom::any || (situation_.of == Whom::writes) == isWrite(request);
    if (!isNew || !isWanted || (situation_.times > 0 && happened_ >= situation_.times)) {
        return false;
    }
    return ++matching_ % situation_.every == 0;
}

Act Stage::asked(int client, const Bytes& request, const Bytes& right)
{
    if (client != client_) {
        closed(client_);
        client_ = client;
    }
    const bool isNew = request != last_;
    last_ = request;
    if (natureOf(right) == Reply::exception || right.empty()) {
        return says(right); // what is refused anyway is not played with
    }
    switch (situation_.play) {
    case Play::silent:
        return Act();
    case Play::refuseAll:
        return says(refusalOf(request, situation_.code));
    case Play::late:
        return late(request, right, isNew);
    case Play::duplicate:
        return duplicate(request, right, isNew);
    case Play::calm:
    case Play::restart:
    case Play::refused:
    case Play::rejected:
        return says(right);
    default:
        return once(request, right, isNew);
    }
}

// The reply is kept until the host has gone on: its request was repeated and answered, or given up.
Act Stage::late(const Bytes& request, const Bytes& right, bool isNew)
{
    if (step_ == Step::awaitsRepetition && request == waiting_) {
        step_ = Step::awaitsNext;
        return says(right);
    }
    if (step_ != Step::none && isNew) {
        step_ = Step::none;
        ++happened_;
        Act act;
        act.says.push_back({0, kept_, Reply::late});
        act.says.push_back({situation_.hold, right, Reply::right});
        return act;
    }
    if (isHit(request, isNew)) {
        step_ = Step::awaitsRepetition;
        waiting_ = request;
        kept_ = right;
        return Act();
    }
    return says(right);
}

Act Stage::duplicate(const Bytes& request, const Bytes& right, bool isNew)
{
    if (step_ == Step::awaitsNext && isNew) {
        step_ = Step::none;
        ++happened_;
        return says(right, situation_.hold);
    }
    Act act = says(right);
    if (step_ == Step::none && isHit(request, isNew)) {
        step_ = Step::awaitsNext;
        act.says.push_back({0, right, Reply::duplicate});
    }
    return act;
}

Act Stage::once(const Bytes& request, const Bytes& right, bool isNew)
{
    if (situation_.play == Play::exception && !isNew && request == refused_) {
        return says(refusalOf(request, situation_.code));
    }
    if (!isHit(request, isNew)) {
        return says(right);
    }
    ++happened_;
    return hit(request, right);
}

Act Stage::hit(const Bytes& request, const Bytes& right)
{
    Act act;
    switch (situation_.play) {
    case Play::slow:
        return says(right, situation_.by);
    case Play::foreign:
        act.says.push_back({0, foreignReply(request, right, happened_ - 1), Reply::foreign});
        act.says.push_back({situation_.hold, right, Reply::right});
        return act;
    case Play::tooShort:
        act.says.push_back({0, shortReply(right, happened_ - 1), Reply::tooShort});
        return act;
    case Play::tooLong:
        act.says.push_back({0, longReply(right, happened_ - 1), Reply::tooLong});
        return act;
    case Play::cut:
        act.says.push_back({0, halfReply(right), Reply::cut});
        return act;
    case Play::exception:
        refused_ = request;
        return says(refusalOf(request, situation_.code));
    case Play::disconnect:
        act.close = true;
        return act;
    default: // drop
        return act;
    }
}

} // namespace tavmir::judge
