// Numbers of things.
#ifndef TAVMIR_PROJECT_COUNTED_H
#define TAVMIR_PROJECT_COUNTED_H

#include <QtCore/QString>

namespace tavmir::project
{

// "1 address", "2 addresses".
QString counted(quint64 count, const char* one, const char* several);

} // namespace tavmir::project

#endif
