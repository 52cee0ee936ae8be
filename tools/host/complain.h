// Problems on standard error.
#ifndef TAVMIR_HOST_COMPLAIN_H
#define TAVMIR_HOST_COMPLAIN_H

#include <QtCore/QString>

namespace tavmir::host
{

// One line, with the program's name in front. For what goes wrong before the output has a thread
// of its own.
void complain(const QString& problem);

// The same line, for an output.
QByteArray complaint(const QString& problem);

} // namespace tavmir::host

#endif
