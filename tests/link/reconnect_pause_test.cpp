// The pauses between attempts to connect.
#include "link/reconnect_pause.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(ReconnectPause, GrowsWithJitterUpToItsBound)
{
    for (unsigned seed = 1; seed < 50; ++seed) {
        ReconnectPause pause(100, 1000, seed);
        double base = 100;
        for (int i = 0; i < 10; ++i) {
            const int ms = pause.next();
            EXPECT_GE(ms, static_cast<int>(0.75 * base));
            EXPECT_LE(ms, std::min(1000, static_cast<int>(1.25 * base)));
            base = std::min(1000.0, 2 * base);
        }
        pause.reset();
        EXPECT_LE(pause.next(), 125);
    }
}

TEST(ReconnectPause, DiffersBetweenHosts)
{
    EXPECT_NE(ReconnectPause(1000, 5000, 1).next(), ReconnectPause(1000, 5000, 999).next());
}

TEST(ReconnectPause, IsNeverZero)
{
    ReconnectPause pause(1, 1, 5);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(1, pause.next());
    }
}

} // namespace tavmir::host
