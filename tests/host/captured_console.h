// A console whose standard output and standard error a test can read.
#ifndef TAVMIR_TESTS_HOST_CAPTURED_CONSOLE_H
#define TAVMIR_TESTS_HOST_CAPTURED_CONSOLE_H

#include "host/console.h"

#include <optional>
#include <string>

namespace tavmir::host
{

// Only one at a time: it takes the place of the program's own standard output and error. A test
// says what it expects after finish().
class CapturedConsole
{
public:
    // output  a descriptor to stand in for standard output; -1: a file
    explicit CapturedConsole(int output = -1);
    ~CapturedConsole();

    Console& console() { return *console_; }

    // Ends the console; what its finishSoon() said.
    bool finish();

    // After finish().
    const std::string& out() const { return out_; }
    const std::string& err() const { return err_; }

private:
    std::optional<Console> console_;
    int ownOut_;
    int ownErr_;
    int outFile_ = -1;
    int errFile_ = -1;
    std::string out_;
    std::string err_;
};

} // namespace tavmir::host

#endif
