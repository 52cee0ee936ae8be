// Records what the driver reports through the two host callbacks.
#ifndef TAVMIR_TESTS_SUPPORT_CALLBACK_RECORDER_H
#define TAVMIR_TESTS_SUPPORT_CALLBACK_RECORDER_H

#include "tavmir_kx_tcp/host_interface.h"

#include <functional>
#include <ostream>
#include <tuple>
#include <vector>

namespace tavmir
{
namespace test
{

struct VarDone {
    int station;
    int hostKey;
    int varKey;
    int result;

    bool operator==(const VarDone& other) const
    {
        return std::tie(station, hostKey, varKey, result) ==
               std::tie(other.station, other.hostKey, other.varKey, other.result);
    }
};

inline void PrintTo(const VarDone& done, std::ostream* out)
{
    *out << "{station " << done.station << ", hostKey " << done.hostKey << ", varKey "
         << done.varKey << ", result " << done.result << '}';
}

struct CommFail {
    int vars; // entries of the list that came with the report
    int hostKey;
    int flag;

    bool operator==(const CommFail& other) const
    {
        return std::tie(vars, hostKey, flag) == std::tie(other.vars, other.hostKey, other.flag);
    }
};

inline void PrintTo(const CommFail& fail, std::ostream* out)
{
    *out << "{vars " << fail.vars << ", hostKey " << fail.hostKey << ", flag " << fail.flag << '}';
}

// Exists once at a time. `varDoneFunction` and `commFailFunction` are what a test registers.
class CallbackRecorder
{
public:
    CallbackRecorder();
    ~CallbackRecorder();

    CallbackRecorder(const CallbackRecorder&) = delete;
    CallbackRecorder& operator=(const CallbackRecorder&) = delete;

    static int varDoneFunction(int station, int hostKey, int varKey, int result);
    static int commFailFunction(QList<RW_VAR> vars, int hostKey, int flag);

    std::vector<VarDone> done;
    std::vector<CommFail> failed;

    // Runs inside each callback, on the thread that calls it.
    std::function<void()> insideCallback;
};

} // namespace test
} // namespace tavmir

#endif
