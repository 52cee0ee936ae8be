// The line's figures as one line of a screen.
#ifndef TAVMIR_TERMINAL_LINK_LINE_H
#define TAVMIR_TERMINAL_LINK_LINE_H

#include "feed/recent_figures.h"

namespace tavmir::host
{

// "pass 12.3 ms  round trip 0.21 ms  last minute: 3 time-outs, 6 retries"; in short words where
// these do not fit into the width.
QString linkLine(const RecentLine& line, int width);

} // namespace tavmir::host

#endif
