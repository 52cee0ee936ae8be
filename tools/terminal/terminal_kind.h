// What kind of terminal $TERM names.
#ifndef TAVMIR_TERMINAL_TERMINAL_KIND_H
#define TAVMIR_TERMINAL_TERMINAL_KIND_H

namespace tavmir::host
{

// True when the kind is known and can place its cursor. To be asked before a screen is made: the
// library keeps what it has begun of a screen that it then refuses.
bool isDrawableTerminal();

} // namespace tavmir::host

#endif
