// Writing to a descriptor without waiting for who reads it: a thread of its own writes what fits.
// What is too much is dropped and counted; or, where the output is what a command was asked for,
// whoever writes waits for room until it is told to hurry.
#ifndef TAVMIR_HOST_OUTPUT_H
#define TAVMIR_HOST_OUTPUT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>

namespace tavmir::host
{

class Output
{
public:
    static constexpr size_t kMostWaiting = 4 << 20; // bytes

    // Make it after what blocks signals: its thread is to leave them to others.
    explicit Output(int descriptor, size_t mostWaiting = kMostWaiting);

    // From now on write() waits for room; until hurry(), which ends every such wait and those to
    // come. Any thread.
    void waitForRoom();
    void hurry();
    // Gives up what is still waiting.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Does not wait, unless told to. A piece is written whole, or dropped whole when too much is
    // waiting; one that nothing is waiting before is taken, however large. Any thread.
    void write(const QByteArray& piece);

    // True while something is waiting: a picture that will soon be followed by a newer one need
    // not be written.
    bool isBehind() const;

    // Pieces dropped so far.
    quint64 dropped() const;

    // Waits until everything is written, or nothing more can be, at most `ms` while nobody reads.
    // False: something was not written.
    bool finish(int ms);

    // The errno that ended the writing; 0: none did. EPIPE: nobody reads any more.
    int error() const;

private:
    class Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace tavmir::host

#endif
