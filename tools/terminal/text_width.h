// Texts in the columns of a terminal: a wide character takes two, a combining one none. What that
// is, and what can be drawn at all, is as the locale (LC_CTYPE) says.
#ifndef TAVMIR_TERMINAL_TEXT_WIDTH_H
#define TAVMIR_TERMINAL_TEXT_WIDTH_H

#include <QtCore/QString>

namespace tavmir::host
{

// The text with "?" for each character that the locale cannot draw. All below expect such a text.
QString drawable(const QString& text);

int widthOf(const QString& text);

// The text when it is at most `width` wide, else its beginning or its end with ellipsis() for what
// was cut. No character is cut in halves.
QString cutAtEnd(const QString& text, int width);
QString cutAtStart(const QString& text, int width);

// The text cut at its end or filled up with spaces.
QString fitted(const QString& text, int width);
QString fittedRight(const QString& text, int width);

// "…" and "–"; "~" and "-" where they cannot be drawn.
QString ellipsis();
QString nothingRead();

} // namespace tavmir::host

#endif
