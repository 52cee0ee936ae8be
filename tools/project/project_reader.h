// Reads a project file into a checked Project, or says in one line where and what is wrong.
//
// Refused with a message: a file above kMaxFileBytes, malformed JSON (line and column),
// nesting above kMaxNesting, a key given twice or not known, a missing or wrongly typed value,
// an unknown type or format, a duplicate name, bad bounds, more than kMaxElements elements, a
// structure that contains itself, an address that does not resolve, a value out of range.
#ifndef TAVMIR_PROJECT_PROJECT_READER_H
#define TAVMIR_PROJECT_PROJECT_READER_H

#include "project_model.h"

#include <QtCore/QByteArray>

namespace tavmir::project
{

constexpr qint64 kMaxFileBytes = 16 * 1024 * 1024;
constexpr int kMaxNesting = 32;        // of JSON objects and arrays
constexpr int kMaxStructureDepth = 16; // structures within structures
constexpr int kMaxDimensions = 8;
constexpr qint64 kMaxElements = 1000000; // leaf elements of all labels together
constexpr int kMaxTextWords = 1024;
constexpr int kTextArrayWords = 16; // texts of an array lie 256 bits apart

struct ReadOutcome {
    std::optional<Project> project; // empty: refused
    QString error;                  // one line: file, place, what
};

// Reads the file `fileName`. Any thread.
ReadOutcome readProjectFile(const QString& fileName);

// The same from bytes; `source` names them in messages. Any bytes are safe. Any thread.
ReadOutcome readProject(const QByteArray& json, const QString& source);

} // namespace tavmir::project

#endif
