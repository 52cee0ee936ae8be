// How often the random host makes each kind of call.
#ifndef TAVMIR_TESTS_MODEL_STEP_TABLE_H
#define TAVMIR_TESTS_MODEL_STEP_TABLE_H

#include "model/session.h"

namespace tavmir::model
{

struct StepTable {
    using Call = void (Session::*)(SeededRandom&);

    static const unsigned kKinds = 100;

    // `kind` below kKinds.
    static Call callOf(unsigned kind);
};

} // namespace tavmir::model

#endif
