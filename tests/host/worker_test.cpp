// Work in its order, and its end.
#include "host/worker.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace tavmir::host
{

TEST(Worker, WorksInOrderOnAnotherThread)
{
    std::vector<int> done;
    std::promise<std::thread::id> last;
    Worker worker;
    worker.add([&] { done.push_back(1); });
    worker.add([&] { done.push_back(2); });
    worker.add([&] { last.set_value(std::this_thread::get_id()); });
    EXPECT_NE(std::this_thread::get_id(), last.get_future().get());
    EXPECT_EQ((std::vector<int>{1, 2}), done);
}

TEST(Worker, EndsWithThePieceUnderWay)
{
    std::promise<void> begun;
    std::promise<void> goOn;
    bool isDone = false;
    auto worker = std::make_unique<Worker>();
    worker->add([&] {
        begun.set_value();
        goOn.get_future().wait();
        isDone = true;
    });
    begun.get_future().wait();
    std::thread ending([&] { worker.reset(); });
    goOn.set_value();
    ending.join();
    EXPECT_TRUE(isDone);
}

TEST(Worker, EndsWithoutWhatWaits)
{
    constexpr int kPieces = 5000;
    int done = 0;
    auto worker = std::make_unique<Worker>();
    for (int i = 0; i < kPieces; ++i) {
        worker->add([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            ++done;
        });
    }
    worker.reset();
    EXPECT_LT(done, kPieces);
}

} // namespace tavmir::host
