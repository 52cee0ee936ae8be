// Rows into the tables of a file.
#ifndef TAVMIR_RECORDER_ROW_INSERTION_H
#define TAVMIR_RECORDER_ROW_INSERTION_H

#include "database.h"
#include "recorded_rows.h"

namespace tavmir::recorder
{

struct StorageFailure {
    QString problem; // one line, without the file's name
    StorageError error = StorageError::none;
};

// None: all rows are in. Else why not; some may be, so it belongs into a transaction.
std::optional<StorageFailure> insertRows(Database& database, const Batch& batch);

} // namespace tavmir::recorder

#endif
