// A project with one variable of each kind, for the tests of this folder.
#ifndef TAVMIR_TESTS_PLAN_PLAN_PROJECT_H
#define TAVMIR_TESTS_PLAN_PLAN_PROJECT_H

#include "plan/polled_plan.h"
#include "project/test_project.h"
#include "project/value_format.h"

namespace tavmir::host
{

// polled      entries of the list, as JSON
// connection  keys of the connection, as JSON
inline project::Project planProject(const QByteArray& polled, const QByteArray& connection = "")
{
    return project::readGood(R"({
  "connection": {)" + connection +
                             R"(},
  "labels": [ { "name": "M", "variables": [
      { "name": "bit", "type": "bit", "address": 100 },
      { "name": "w", "type": "word", "address": 3200, "bits": true },
      { "name": "d", "type": "dword", "address": 3200, "bits": true },
      { "name": "r", "type": "real", "address": 5024 },
      { "name": "text", "type": "text", "address": 6400, "words": 3 },
      { "name": "inText", "type": "word", "address": 6416 },
      { "name": "names", "type": "text", "address": 9600, "words": 2, "array": { "bounds": [[1, 2]] } },
      { "name": "a", "type": "word", "address": 16000, "array": { "bounds": [[0, 9]] } } ] } ],
  "polled": [)" + polled + "] }");
}

inline project::Element elementOf(const project::Project& project, const QString& address)
{
    const project::Resolution resolution = project::resolveAddress(project, address);
    EXPECT_TRUE(resolution.ok) << address.toStdString();
    return resolution.element;
}

constexpr char kOwnStations[] = R"("stationMode": "own", "station": 4)";

} // namespace tavmir::host

#endif
