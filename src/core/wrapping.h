// 32-bit signed arithmetic that wraps, without undefined behaviour. Private.
#ifndef TAVMIR_CORE_WRAPPING_H
#define TAVMIR_CORE_WRAPPING_H

#include <QtCore/QtGlobal>

namespace tavmir
{

inline qint32 wrapAdd(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) + static_cast<quint32>(b));
}

inline qint32 wrapSubtract(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) - static_cast<quint32>(b));
}

inline qint32 wrapMultiply(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) * static_cast<quint32>(b));
}

} // namespace tavmir

#endif
