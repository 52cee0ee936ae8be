// The requests foretold, looked through.
#include "explain_request.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

constexpr int kMostShared = 10;

QString namesInWords(const QStringList& names)
{
    const int more = names.size() - kMostShared;
    const QString all = names.mid(0, kMostShared).join(", ");
    return more > 0 ? QString("%1 and %2 more").arg(all).arg(more) : all;
}

} // namespace

SharedRequest sharedRequest(const ExplainFacts& facts, const PolledElement& variable)
{
    const std::vector<WireElement> parts = wireElements(variable.element, variable.station);
    const FrameWords words(facts.asked);
    for (size_t i = 0; i < facts.frames.size(); ++i) {
        const PlannedFrame& frame = facts.frames[i];
        const auto& held = frame.elements;
        if (std::find(held.begin(), held.end(), parts.front()) == held.end()) {
            continue;
        }
        SharedRequest shared;
        shared.request = QString("request %1 of %2").arg(i + 1).arg(facts.frames.size());
        QStringList others;
        for (const auto& user : words.variablesOf(frame)) {
            if (facts.asked[user.first].name != variable.name) {
                others << words.nameOf(user);
            }
        }
        shared.shares = others.size();
        shared.step = {"request", "Request", true,
                       QString("%1 of a pass, %2; %3")
                           .arg(shared.request,
                                others.isEmpty() ? QString("shared with nobody")
                                                 : "shared with " + namesInWords(others),
                                endInWords(frame)),
                       QString()};
        return shared;
    }
    SharedRequest none;
    none.step = {"request", "Request", false, "in no request of a pass", QString()};
    return none;
}

} // namespace tavmir::host
