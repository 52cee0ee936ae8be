// What a random host project looks like: label trees that mostly make sense, and address texts
// that mostly resolve.
#ifndef TAVMIR_TESTS_MODEL_WORLD_H
#define TAVMIR_TESTS_MODEL_WORLD_H

#include "model/model_records.h"
#include "model/seeded_random.h"

namespace tavmir::model
{

// A label with its variables. Some of its records contradict themselves: counts beyond lists,
// bounds or sizes missing, radixes that do not exist.
Label randomLabel(SeededRandom& random);

// An address text into one of the labels, or near it. `labels` is not empty.
Text randomAddress(SeededRandom& random, const std::vector<Label>& labels);

// Some text of printable characters, quotes, backslashes and tabs.
Text randomText(SeededRandom& random);

} // namespace tavmir::model

#endif
