// The causes in the order in which they hide each other.
#include "explain_conclusion.h"

#include "project/counted.h"

namespace tavmir::host
{

namespace
{

// Connected, and nothing of it has failed.
QString whyWaiting(const WhyFacts& why, const QString& what)
{
    const bool isPartial = why.parts > 1 && why.missingParts < why.parts;
    if (why.quality.quality == Quality::never && isPartial) {
        return QString("%1: only %2 of its %3 words came, and a text is shown when it is "
                       "whole.")
            .arg(what)
            .arg(why.parts - why.missingParts)
            .arg(why.parts);
    }
    if (!why.wasAsked) {
        return QString("%1: it has not been asked for yet, its turn in the pass comes.").arg(what);
    }
    return QString("%1: %2.").arg(what, why.failure.isEmpty() ? why.quality.reason : why.failure);
}

QString whyBad(const WhyFacts& why, const QString& what)
{
    const QString others =
        why.shares > 0
            ? "; " + project::counted(static_cast<quint64>(why.shares), "other is", "others are") +
                  " in the same request"
            : QString();
    return QString("%1: %2%3.").arg(what, why.quality.reason, others);
}

} // namespace

QString conclusionOf(const WhyFacts& why)
{
    if (why.quality.quality == Quality::good && why.age) {
        return QString("The value is there: %1 brought it %2 ago.")
            .arg(why.request.isEmpty() ? QString("a request") : why.request,
                 durationText(*why.age));
    }
    const QString what = why.age ? QString("The value is %1 old").arg(durationText(*why.age))
                                 : QString("There is no value");
    if (why.quality.quality == Quality::unconfirmed) {
        return QString("%1, and it may be another one by now: %2.").arg(what, why.quality.reason);
    }
    if (!why.isConnected) {
        return QString("%1: %2; %3.")
            .arg(what,
                 why.wasConnected ? "the connection was lost" : "there has been no connection yet",
                 why.line);
    }
    if (why.isSwitchedOff) {
        return QString("%1: station %2 is switched off, nothing is sent to it.")
            .arg(what)
            .arg(why.station);
    }
    if (!why.aside.isNull()) {
        return QString("%1: the controller refuses this address by itself (%2), so it is tried "
                       "only now and then.")
            .arg(what, why.aside);
    }
    return why.quality.quality == Quality::bad ? whyBad(why, what) : whyWaiting(why, what);
}

} // namespace tavmir::host
