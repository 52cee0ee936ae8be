// A diagnosis on a page of text, and the same as JSON: each figure and each trouble has one label,
// the text shows it as it is, the JSON object has it as its key or kind, in camelCase.
#ifndef TAVMIR_HOST_DIAGNOSE_REPORT_H
#define TAVMIR_HOST_DIAGNOSE_REPORT_H

#include "diagnose/diagnosis.h"

#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

namespace tavmir::host
{

//   file  as it is to be called
QStringList diagnosisLines(const diagnose::Diagnosis& diagnosis, const QString& file);
QJsonObject diagnosisJson(const diagnose::Diagnosis& diagnosis, const QString& file);

} // namespace tavmir::host

#endif
