// What the elements of frames are called, as lines that other programs read: the dissector shows
// the names and formats of a project by them.
//
//   class⇥address⇥station⇥format⇥name
//   word⇥3016⇥*⇥unsigned⇥Main.Setpoint
#ifndef TAVMIR_PLAN_WIRE_NAMES_H
#define TAVMIR_PLAN_WIRE_NAMES_H

#include "polled_index.h"

#include <QtCore/QStringList>

namespace tavmir::host
{

// A line for each element on the wire that a variable of the project takes, ascending: class "bit",
// "word" or "dword", address in bits, "*" for any station, the format in which its values are
// shown, the name. The words of a text behind the first have their distance in bits behind the
// name. Of several variables for one element the one declared last names it, as in traces; a text
// only names what no other variable does.
//
//   polled  of the same project
QStringList wireNames(const project::Project& project, const PolledIndex& polled);

} // namespace tavmir::host

#endif
