#include "rate_limit.h"

#include <algorithm>

namespace tavmir::controller
{

namespace
{
constexpr std::int64_t kSecondUs = 1000000;
constexpr std::int64_t kKeptUs = kSecondUs / 10;
} // namespace

RateLimit::RateLimit(int perSecond)
    : partUs_(perSecond > 0 ? kSecondUs / perSecond : 0),
      keptUs_(std::max<std::int64_t>(0, kKeptUs - partUs_))
{
}

std::int64_t RateLimit::waitUs(std::int64_t nowUs) const
{
    return partUs_ == 0 ? 0 : std::max<std::int64_t>(0, usedUpTo_ - keptUs_ - nowUs);
}

void RateLimit::take(std::int64_t nowUs)
{
    usedUpTo_ = std::max(usedUpTo_, nowUs) + partUs_;
}

} // namespace tavmir::controller
