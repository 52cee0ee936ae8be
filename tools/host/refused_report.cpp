// Names and reasons.
#include "refused_report.h"

#include <QtCore/QJsonObject>

namespace tavmir::host
{

QStringList refusedLines(const RefusedVariables& refused)
{
    QStringList lines;
    if (!refused.all().empty()) {
        lines << QString("  refused variables: %1").arg(refused.all().size());
    }
    for (const auto& [name, why] : refused.all()) {
        lines << QString("    %1: %2").arg(name, why);
    }
    return lines;
}

QJsonArray refusedJson(const RefusedVariables& refused)
{
    QJsonArray list;
    for (const auto& [name, why] : refused.all()) {
        list.append(QJsonObject{{"name", name}, {"reason", why}});
    }
    return list;
}

} // namespace tavmir::host
