// Reads and writes typed while the values run, one after the other, on a thread of their own.
#ifndef TAVMIR_HOST_OPERATOR_INPUT_H
#define TAVMIR_HOST_OPERATOR_INPUT_H

#include "line_reader.h"
#include "prepared_host.h"

#include <atomic>
#include <functional>
#include <thread>

namespace tavmir::host
{

class OperatorInput
{
public:
    // descriptor  lines of "ADDRESS=VALUE" and "ADDRESS"
    // say         told what became of each; on the input's thread
    OperatorInput(int descriptor, PreparedHost& host, std::function<void(const QString& text)> say);
    // Ends when what it waits for has ended.
    ~OperatorInput();

    // Takes no further line.
    void stop() { lines_.stop(); }

    // Waits until what is under way has ended. False: one of the writes was not done.
    bool finish();

private:
    void loop();
    void write(const QString& text);
    void read(const QString& address);

    std::atomic<bool> allWritten_{true};
    PreparedHost& host_;
    std::function<void(const QString& text)> say_;
    LineReader lines_;
    std::thread thread_;
};

} // namespace tavmir::host

#endif
