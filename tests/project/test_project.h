// A project for the tests of this folder, and short ways to make others.
#ifndef TAVMIR_TESTS_PROJECT_TEST_PROJECT_H
#define TAVMIR_TESTS_PROJECT_TEST_PROJECT_H

#include "project/project_reader.h"

#include <gtest/gtest.h>

namespace tavmir::project
{

// The labels of the driver's documentation, with some more variables.
constexpr char kPlant[] = R"({
  "types": [
    { "name": "Axis", "size": 96, "members": [
      { "name": "Pos", "type": "dword", "offset": 0 },
      { "name": "Vel", "type": "real", "offset": 32 },
      { "name": "Limits", "type": "word", "offset": 64, "array": { "bounds": [[0, 1]] } } ] },
    { "name": "Cell", "size": 400, "members": [
      { "name": "Axis", "type": "Axis", "offset": 16 },
      { "name": "Name", "type": "text", "offset": 112, "words": 4 } ] } ],
  "labels": [
    { "name": "Main", "variables": [
      { "name": "Run", "type": "bit", "address": 100 },
      { "name": "W", "type": "word", "address": 3000, "bits": true },
      { "name": "D", "type": "dword", "address": 3100, "bits": true },
      { "name": "Plain", "type": "word", "address": 3200 },
      { "name": "M", "type": "word", "address": 2000, "array": { "radix": 10, "bounds": [[1, 3], [0, 4]] } },
      { "name": "Hex", "type": "bit", "address": 700, "array": { "radix": 16, "bounds": [[0, 40]] } },
      { "name": "Axis", "type": "Axis", "address": 1000, "array": { "bounds": [[0, 3]] } },
      { "name": "Cell", "type": "Cell", "address": 8000 },
      { "name": "Temp", "type": "real", "address": 5000 },
      { "name": "Title", "type": "text", "address": 6000, "words": 8 },
      { "name": "Names", "type": "text", "address": 7000, "words": 3, "array": { "bounds": [[-1, 1]] } }
    ] } ] })";

inline Project readGood(const QByteArray& json)
{
    ReadOutcome outcome = readProject(json, "test.json");
    EXPECT_TRUE(outcome.project.has_value()) << outcome.error.toStdString();
    return outcome.project.value_or(Project());
}

inline Project plant()
{
    return readGood(kPlant);
}

inline std::string refusal(const QByteArray& json)
{
    const ReadOutcome outcome = readProject(json, "test.json");
    EXPECT_FALSE(outcome.project.has_value());
    return outcome.error.toStdString();
}

} // namespace tavmir::project

#endif
