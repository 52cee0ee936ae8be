// The fixture of every situation: a driver with its labels, a host's link, and a controller
// that does what the test says. The test's own thread is the communication thread.
#ifndef TAVMIR_TESTS_SITUATIONS_SITUATION_TEST_H
#define TAVMIR_TESTS_SITUATIONS_SITUATION_TEST_H

#include "link/watched_link.h"
#include "scripted_controller.h"
#include "support/driver_test.h"

#include <memory>

namespace tavmir::situations
{

class SituationTest : public test::DriverTest
{
protected:
    SituationTest();

    // One request and its answer.
    struct Turn {
        bool sent = false; // false: the driver had nothing to send
        host::ExchangeEnd result = host::ExchangeEnd::timeout;
        int status = 0; // what the driver made of it
        QByteArray frame;
    };
    Turn turn();

    // Turns until one ends well; false when none of `most` does.
    bool recovers(int most = 2000);

    // The polled word "Main.Level" of an array, read from the cache.
    int level(int index = 0);

    void pollLevels(int count, int first = 0);
    int writeLevel(int index, int value, int hostKey, int varKey);
    int readLevelOnce(int index, int hostKey, int varKey);

    // A script that answers every request right, with this value.
    static ScriptedController::Script answering(quint32 value);

    ScriptedController controller;
    std::unique_ptr<host::WatchedLink> link;
    int replyTimeoutMs = 150;

    // Makes the link anew with `replyTimeoutMs`.
    void connectLink();
};

} // namespace tavmir::situations

#endif
