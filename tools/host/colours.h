// Whether standard output is to be coloured.
#ifndef TAVMIR_HOST_COLOURS_H
#define TAVMIR_HOST_COLOURS_H

namespace tavmir::host
{

// True on a terminal, unless NO_COLOR is set to anything but an empty text.
bool coloursWanted();

} // namespace tavmir::host

#endif
