// One, or several.
#include "counted.h"

namespace tavmir::project
{

QString counted(quint64 count, const char* one, const char* several)
{
    return QString("%1 %2").arg(count).arg(count == 1 ? one : several);
}

} // namespace tavmir::project
