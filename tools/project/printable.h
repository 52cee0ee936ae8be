// Texts that a controller or a user gave, as they may be shown.
#ifndef TAVMIR_PROJECT_PRINTABLE_H
#define TAVMIR_PROJECT_PRINTABLE_H

#include <QtCore/QString>

namespace tavmir::project
{

// What cannot be printed, as "\x0a": it is one line whatever the text holds.
QString printable(const QString& text);

} // namespace tavmir::project

#endif
