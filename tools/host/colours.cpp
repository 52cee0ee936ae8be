// The terminal and the environment.
#include "colours.h"

#include <cstdlib>
#include <unistd.h>

namespace tavmir::host
{

bool coloursWanted()
{
    const char* refused = std::getenv("NO_COLOR");
    return ::isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0');
}

} // namespace tavmir::host
