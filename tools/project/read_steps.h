// The steps of reading a project, each from its JSON key into the records. All throw Refusal
// (json_object.h). Private to this folder.
#ifndef TAVMIR_PROJECT_READ_STEPS_H
#define TAVMIR_PROJECT_READ_STEPS_H

#include "json_object.h"
#include "project_model.h"

#include <optional>

namespace tavmir::project
{

Connection readConnection(const QJsonValue& value);

// The key "format"; none when it is missing.
std::optional<Format> readFormatKey(const JsonObject& object);

// "types": names first, so that they may refer to each other in any order, then the members.
void readTypes(const QJsonArray& list, Project& project);
// "labels", and the name indices of the project.
void readLabels(const QJsonArray& list, Project& project);

// Refuses structures that contain themselves or nest too deep, members beyond their
// structure's size, variables beyond the address range, and too many elements.
void checkTypes(const Project& project);

// These need a project whose labels stand.
void readPolled(const QJsonArray& list, Project& project);
void readInitial(const QJsonArray& list, Project& project);
void readSignals(const QJsonArray& list, Project& project);

} // namespace tavmir::project

#endif
