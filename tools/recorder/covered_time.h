// Which time the files of a recording cover. The wall clock may have been set between them, so that
// a later file may lie before an earlier one, or over it.
#ifndef TAVMIR_RECORDER_COVERED_TIME_H
#define TAVMIR_RECORDER_COVERED_TIME_H

#include "recording_folder.h"

#include <map>

namespace tavmir::recorder
{

struct TimeSpan {
    Micros from = 0;
    Micros until = 0;
};

// Until when a file says that it covers; 0: it does not, or cannot be read.
Micros coveredUntil(const Member& member);

// Of a folder that is recorded into: each file's end is read once, or told. One thread.
class CoveredTime
{
public:
    void read(const std::vector<Member>& members);
    void tell(quint64 number, Micros until) { untils_[number] = until; }
    // Of that file; 0: it is not known.
    Micros untilOf(quint64 number) const;

    // From the least beginning of these files to the greatest end, what lies between them
    // included.
    TimeSpan of(const std::vector<Member>& members) const;

private:
    std::map<quint64, Micros> untils_; // by the number of the file
};

} // namespace tavmir::recorder

#endif
