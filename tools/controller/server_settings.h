// What the server is told once: how long faults last, what it takes on, where its lines go.
#ifndef TAVMIR_CONTROLLER_SERVER_SETTINGS_H
#define TAVMIR_CONTROLLER_SERVER_SETTINGS_H

#include <QtCore/QString>

#include <functional>

namespace tavmir::controller
{

struct ServerSettings {
    int delayMs = 50;    // Delay
    int lateMs = 2000;   // Late: longer than clients usually wait
    int refuseMs = 1000; // Refuse

    int mostClients = 256;            // at the same time; the next one is closed at once
    qint64 mostUnsentBytes = 1 << 20; // per client; who lets more wait is closed

    std::function<void(const QString&)> log = [](const QString&) {};
    std::function<void(const QString&)> trace; // empty: frames are not traced
};

} // namespace tavmir::controller

#endif
