// What TAVMIR_CHECK asks for. Private.
//
//   report        blocks on standard error (also what an empty or missing setting means)
//   log:FILE      blocks at the end of FILE
//   abort         the process ends after the first block
//   only:ID,…     looks at these duties only
//   not:ID,…      passes over these
//
// Words are parted by blanks or semicolons and add up. A word or identifier that is not known is
// said once on standard error and left out; `only:` without a known identifier looks at nothing.
#ifndef TAVMIR_CHECKED_SETTINGS_H
#define TAVMIR_CHECKED_SETTINGS_H

#include "checked/duties.h"

#include <bitset>
#include <string>
#include <vector>

namespace tavmir
{
namespace checked
{

struct Settings {
    std::bitset<kDuties> watched; // all unless the setting says otherwise
    bool endsProcess;
    std::string logFile;               // empty: standard error
    std::vector<std::string> problems; // one line each

    Settings() : endsProcess(false) { watched.set(); }
};

Settings readSettings(const std::string& text);

} // namespace checked
} // namespace tavmir

#endif
