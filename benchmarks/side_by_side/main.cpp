// Keeps 10,000 16-bit values fresh with each client in turn, round by round, and prints one line
// of JSON for each client, layout, delay and round.
// Usage: tavmir_side_by_side [ROUNDS [MILLISECONDS [LONGEST_DELAY [CLIENT]]]]
//   LONGEST_DELAY  leaves out the longer ones of the added round trips, in milliseconds
//   CLIENT         only this one, by its name: for a profiler
#include "side_by_side/client.h"
#include "side_by_side/responder.h"
#include "support/quiet_messages.h"

#include <QtCore/QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/resource.h>

namespace
{

using namespace tavmir::bench;

const int kDelaysMs[] = {0, 1, 10};
const Layout kLayouts[] = {Layout::scattered, Layout::contiguous};

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

rusage usage()
{
    rusage used;
    getrusage(RUSAGE_SELF, &used);
    return used;
}

// A round in which readers of the feed missed something is taken so often at most.
const int kTries = 3;

struct Measured {
    Done done;
    double seconds = 0;
    rusage before = {};
    rusage after = {};
    long missed = 0;
};

Measured measuredOnce(Client& client, int port, Layout layout, std::chrono::milliseconds duration)
{
    const std::chrono::milliseconds kWarmUp(20);
    client.connectTo(port, layout);
    client.readFor(kWarmUp);

    Measured measured;
    measured.before = usage();
    const auto start = std::chrono::steady_clock::now();
    measured.done = client.readFor(duration);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    measured.after = usage();
    measured.seconds = elapsed.count();
    client.disconnect();
    measured.missed = client.missed();
    return measured;
}

void measure(Client& client, const Responder& responder, Layout layout, int delayMs, int round,
             std::chrono::milliseconds duration)
{
    Measured it = measuredOnce(client, responder.port(), layout, duration);
    for (int tries = 1; it.missed > 0 && tries < kTries; ++tries) {
        std::fprintf(stderr, "%s: %ld entries of its feed were missed: taken again\n",
                     client.name(), it.missed);
        it = measuredOnce(client, responder.port(), layout, duration);
    }
    std::printf("{\"client\": \"%s\", \"layout\": \"%s\", \"delay_ms\": %d, \"round\": %d, "
                "\"seconds\": %.6f, \"values\": %ld, \"requests\": %ld, "
                "\"user\": %.6f, \"system\": %.6f, \"missed\": %ld}\n",
                client.name(), layout == Layout::scattered ? "scattered" : "contiguous", delayMs,
                round, it.seconds, it.done.values, it.done.requests,
                seconds(it.after.ru_utime) - seconds(it.before.ru_utime),
                seconds(it.after.ru_stime) - seconds(it.before.ru_stime), it.missed);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    const std::chrono::milliseconds duration(argc > 2 ? std::atoi(argv[2]) : 400);
    const int longestDelayMs = argc > 3 ? std::atoi(argv[3]) : kDelaysMs[2];
    const char* const only = argc > 4 ? argv[4] : nullptr;
    // The children first: they share nothing with the clients.
    const Responder responders[] = {Responder(kDelaysMs[0]), Responder(kDelaysMs[1]),
                                    Responder(kDelaysMs[2])};
    QCoreApplication application(argc, argv);
    discardMessages();
    const std::unique_ptr<Client> clients[] = {makeLibmodbusClient(),
                                               makeQtClient(),
                                               makeDriverClient(FeedUse::none),
                                               makeDriverClient(FeedUse::folded),
                                               makeDriverClient(FeedUse::captured),
                                               makeDriverClient(FeedUse::traced),
                                               makeDriverClient(FeedUse::paged),
                                               makeBareClient()};
    for (int round = 0; round < rounds; ++round) {
        for (size_t delay = 0; delay < 3 && kDelaysMs[delay] <= longestDelayMs; ++delay) {
            for (const Layout layout : kLayouts) {
                for (const std::unique_ptr<Client>& client : clients) {
                    if (only && std::strcmp(only, client->name()) != 0) {
                        continue;
                    }
                    measure(*client, responders[delay], layout, kDelaysMs[delay], round, duration);
                }
            }
        }
    }
    return 0;
}
