// Least and greatest.
#include "covered_time.h"

#include "database.h"

#include <algorithm>

namespace tavmir::recorder
{

Micros coveredUntil(const Member& member)
{
    QString ignored;
    const auto database = Database::open(member.path, Database::Mode::read, ignored);
    return database ? database->number("SELECT value FROM about WHERE key = 'covered_until'") : 0;
}

void CoveredTime::read(const std::vector<Member>& members)
{
    for (const Member& member : members) {
        tell(member.number, coveredUntil(member));
    }
}

Micros CoveredTime::untilOf(quint64 number) const
{
    const auto found = untils_.find(number);
    return found != untils_.end() ? found->second : 0;
}

TimeSpan CoveredTime::of(const std::vector<Member>& members) const
{
    if (members.empty()) {
        return TimeSpan();
    }
    TimeSpan span = {members.front().began, members.front().began};
    for (const Member& member : members) {
        span.from = std::min(span.from, member.began);
        span.until = std::max({span.until, member.began, untilOf(member.number)});
    }
    return span;
}

} // namespace tavmir::recorder
