// The terminal's description, looked up and put away again.
#include "terminal_kind.h"

#include <curses.h>
// Its macros would be names of any file; behind the other one, which it needs.
#include <term.h>

namespace tavmir::host
{

bool isDrawableTerminal()
{
    int result = 0;
    if (::setupterm(nullptr, -1, &result) != OK) {
        return false;
    }
    const char* const place = ::tigetstr("cup");
    const bool isThere = place != nullptr && place != reinterpret_cast<const char*>(-1);
    ::del_curterm(::cur_term);
    return isThere;
}

} // namespace tavmir::host
