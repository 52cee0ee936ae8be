// One line per problem.
#include "complain.h"

#include <cstdio>

namespace tavmir::host
{

void complain(const QString& problem)
{
    std::fputs(complaint(problem).constData(), stderr);
}

QByteArray complaint(const QString& problem)
{
    return "tavmir-host: " + problem.toLocal8Bit() + '\n';
}

} // namespace tavmir::host
