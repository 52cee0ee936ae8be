// One line a key; where there is no room, the key's line and another for what it does.
#include "table_help.h"

namespace tavmir::host
{

namespace
{

struct KeyHelp {
    const char* keys;
    const char* effect;
};

constexpr KeyHelp kKeys[] = {
    {"arrows, PgUp, PgDn", "scroll"},
    {"Home, End", "first, last row"},
    {"/", "filter by name or address"},
    {"Esc", "all rows again"},
    {"n, a, w", "sort by name, age, quality"},
    {"", "(again: the other way)"},
    {"p", "the project's order"},
    {":", "write or read: A=VALUE, A"},
    {"Ctrl-L", "draw anew"},
    {"q, Ctrl-C", "end"},
    {"?, any key", "this help, back"},
    {"mark !", "bad: refused or given up"},
    {"mark ~", "stale: too old, or link down"},
    {"mark ?", "written, not yet confirmed"},
};

} // namespace

QStringList helpLines(bool takesCommands, int width)
{
    constexpr int kKeyWidth = 20;
    constexpr int kNarrow = 50;
    QStringList lines;
    for (const KeyHelp& help : kKeys) {
        if (!takesCommands && QString(help.keys) == ":") {
            continue;
        }
        const QString keys = help.keys;
        lines << (width >= kNarrow || keys.isEmpty()
                      ? keys.leftJustified(keys.isEmpty() && width < kNarrow ? 2 : kKeyWidth) +
                            help.effect
                      : keys + ": " + help.effect);
    }
    return lines;
}

} // namespace tavmir::host
