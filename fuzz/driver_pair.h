// The driver and its model side by side: a fuzz target makes the same calls of both, and any
// difference ends the program like a crash.
#ifndef TAVMIR_FUZZ_DRIVER_PAIR_H
#define TAVMIR_FUZZ_DRIVER_PAIR_H

#include "model/driver_model.h"
#include "model/qt_side.h"

#include <string>

namespace tavmir::fuzz
{

class DriverPair
{
public:
    // A fresh driver with a connection record; diagnostic lines are compared, not printed.
    DriverPair();
    ~DriverPair();

    DriverPair(const DriverPair&) = delete;
    DriverPair& operator=(const DriverPair&) = delete;

    void passLabels(const std::vector<model::Label>& labels);
    void resolve(const model::Text& address);
    void read(const model::Text& address, int count);
    void write(const model::Text& address, const model::Bytes& data, int count);
    void addRead(const model::Var& var);
    void addWrite(const model::Var& var);
    void communicate();
    void answer(const model::Bytes& reply, int received);

    void setWord(model::ComWord word, int value);
    // As a host may: of the request in flight, if there is one.
    void setReplyLength(int length);

    model::DriverModel model;

private:
    void compare();

    ComInfo words_;
};

// Prints what differs and ends the program.
[[noreturn]] void differ(const std::string& what);

} // namespace tavmir::fuzz

#endif
