// Growing, jittered pauses.
#include "reconnect_pause.h"

#include <algorithm>

namespace tavmir::host
{

ReconnectPause::ReconnectPause(int minMs, int maxMs, unsigned seed)
    : min_(minMs), max_(maxMs), base_(minMs), random_(seed)
{
}

int ReconnectPause::next()
{
    const double factor = std::uniform_real_distribution<double>(0.75, 1.25)(random_);
    const int pause = std::min(max_, static_cast<int>(base_ * factor));
    base_ = base_ > max_ / 2 ? max_ : base_ * 2;
    return std::max(1, pause);
}

} // namespace tavmir::host
