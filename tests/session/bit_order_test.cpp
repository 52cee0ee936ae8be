// A bit of a word that is written behind other writes of that word.
#include "running_session.h"

#include <thread>

namespace tavmir::host
{

namespace
{

class BitBehindWrites : public RunningSession
{
};

} // namespace

TEST_F(BitBehindWrites, SeesTheLastOfThemAlsoWhenReadsWouldComeInBetween)
{
    // After five turns of writes the driver makes one of reads when a pass is due, as it always is
    // here; two classes in turn make each write a turn of its own.
    Setting setting;
    setting.polled = R"({ "address": "M.bit" })";
    prepare(setting);
    std::vector<Asked> asked;
    for (int i = 1; i <= 12; ++i) {
        asked.push_back(queueWrite("M.d", QString::number(i)));
        asked.push_back(queueWrite("M.w", QString::number(256 * i)));
    }
    Ended bit;
    std::thread writing([&] { bit = write("M.w.b[0]", "1"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // until it has begun
    start();
    writing.join();
    EXPECT_EQ("done", bit.state) << bit.reason;
    for (const Asked& one : asked) {
        EXPECT_EQ("done", await(one).state);
    }
    EXPECT_EQ(256u * 12 + 1, controller_.get('f', kWordAt));
}

} // namespace tavmir::host
