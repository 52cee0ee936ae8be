#include "support/callback_recorder.h"

namespace tavmir
{
namespace test
{

namespace
{
CallbackRecorder* active = nullptr;
}

CallbackRecorder::CallbackRecorder()
{
    active = this;
}

CallbackRecorder::~CallbackRecorder()
{
    active = nullptr;
}

int CallbackRecorder::varDoneFunction(int station, int hostKey, int varKey, int result)
{
    active->done.push_back(VarDone{station, hostKey, varKey, result});
    if (active->insideCallback) {
        active->insideCallback();
    }
    return -1;
}

int CallbackRecorder::commFailFunction(QList<RW_VAR> vars, int hostKey, int flag)
{
    active->failed.push_back(CommFail{vars.size(), hostKey, flag});
    if (active->insideCallback) {
        active->insideCallback();
    }
    return -1;
}

} // namespace test
} // namespace tavmir
