// A controller for the probe's tests: on a loopback port of its own it takes one client, answers
// each read request by script, and remembers the requests. POSIX only, so that it runs with any Qt.
#ifndef TAVMIR_TESTS_PROBE_SCRIPTED_CONTROLLER_H
#define TAVMIR_TESTS_PROBE_SCRIPTED_CONTROLLER_H

#include <QtCore/QByteArray>

#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tavmir
{
namespace test
{

// What to send for a request; empty: nothing.
typedef std::function<QByteArray(const QByteArray& request)> Answer;

class ScriptedController
{
public:
    explicit ScriptedController(Answer answer);

    // Ends when the client has gone.
    ~ScriptedController();

    ScriptedController(const ScriptedController&) = delete;
    ScriptedController& operator=(const ScriptedController&) = delete;

    int port() const { return portNumber; }

    std::vector<QByteArray> requests() const;

private:
    void serve();

    Answer script;
    int listener;
    int portNumber;
    mutable std::mutex mutex;
    std::vector<QByteArray> received;
    std::thread server;
};

// A good answer: every element's value is its address plus 5, cut to the element's width.
QByteArray addressPlusFive(const QByteArray& request);

} // namespace test
} // namespace tavmir

#endif
