// The variables that the controller refuses, in the closing statistics of a run.
#ifndef TAVMIR_HOST_REFUSED_REPORT_H
#define TAVMIR_HOST_REFUSED_REPORT_H

#include "feed/refused_variables.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>

namespace tavmir::host
{

// A heading and one line for each; nothing when there are none.
QStringList refusedLines(const RefusedVariables& refused);

// One object for each: "name" and "reason".
QJsonArray refusedJson(const RefusedVariables& refused);

} // namespace tavmir::host

#endif
