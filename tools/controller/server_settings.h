// What the server is told once: how long faults last, what it takes on, where its lines go.
#ifndef TAVMIR_CONTROLLER_SERVER_SETTINGS_H
#define TAVMIR_CONTROLLER_SERVER_SETTINGS_H

#include "capture/packet.h"

#include <QtCore/QString>

#include <chrono>
#include <cstdint>
#include <functional>

namespace tavmir::controller
{

class LineDirector;

inline std::int64_t steadyUs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

struct ServerSettings {
    int delayMs = 50;    // Delay
    int lateMs = 2000;   // Late: longer than clients usually wait
    int refuseMs = 1000; // Refuse

    int mostClients = 256;            // at the same time; the next one is closed at once
    qint64 mostUnsentBytes = 1 << 20; // per client; who lets more wait is closed

    std::function<std::int64_t()> nowUs = steadyUs; // for the rate
    std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
    std::function<void(const QString&)> log = [](const QString&) {};
    std::function<void(const QString&)> trace; // empty: frames are not traced
    capture::PacketSink* capture = nullptr;    // null: nothing is captured; outlives the server
    LineDirector* director = nullptr;          // null: replies go out with their faults
};

} // namespace tavmir::controller

#endif
