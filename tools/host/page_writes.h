// Carries out what the page writes: one after the other, on a thread of its own, with the calls of
// `tavmir-host write --read-back`.
#ifndef TAVMIR_HOST_PAGE_WRITES_H
#define TAVMIR_HOST_PAGE_WRITES_H

#include "assignment.h"
#include "page/write_desk.h"
#include "prepared_host.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace tavmir::host
{

class PageWrites : public WriteDesk
{
public:
    // What waits at most.
    static constexpr size_t kMostWaiting = 32;

    // host  has its session open; outlives it
    explicit PageWrites(PreparedHost& host);
    // Stops.
    ~PageWrites() override;
    PageWrites(const PageWrites&) = delete;
    PageWrites& operator=(const PageWrites&) = delete;

    // Once, before anything else: takes what --allow-writes says. Empty, or what is wrong with it.
    QString open();

    // What waits ends as not sent. What is under way ends with the session, which must be closed.
    void stop();

    bool isOpen() const override { return isOpen_; }
    bool permits(const project::Element& element) const override;
    QStringList only() const override { return only_; }
    QString words() const override;
    std::optional<Refusal> write(const PageWrite& write, Done done) override;

private:
    struct Waiting {
        Assignment assignment;
        Done done;
    };

    void loop();
    WriteEnd carriedOut(const Assignment& assignment);

    PreparedHost& host_;
    bool isOpen_ = false;
    QStringList only_; // as elements; empty: all
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Waiting> waiting_; // this and the next under the mutex
    bool isStopping_ = false;
    std::thread thread_;
};

} // namespace tavmir::host

#endif
