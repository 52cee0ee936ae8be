// Which variables the controller refuses by themselves, folded out of the feed. One thread.
#ifndef TAVMIR_FEED_REFUSED_VARIABLES_H
#define TAVMIR_FEED_REFUSED_VARIABLES_H

#include "feed_entry.h"

#include <map>

namespace tavmir::host
{

class RefusedVariables
{
public:
    void take(const FeedEntry& entry);

    // By name: "refused, code 2 (illegal data address)".
    const std::map<QString, QString>& all() const { return whyByName_; }

private:
    std::map<QString, QString> whyByName_;
};

} // namespace tavmir::host

#endif
