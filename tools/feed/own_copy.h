// A text with bytes of its own, for one that another thread keeps: Qt counts the holders of shared
// bytes in its library, where a thread checker does not see that the last one frees them.
#ifndef TAVMIR_FEED_OWN_COPY_H
#define TAVMIR_FEED_OWN_COPY_H

#include <QtCore/QString>

namespace tavmir::host
{

inline QString ownCopy(const QString& text)
{
    return QString(text.constData(), text.size());
}

} // namespace tavmir::host

#endif
