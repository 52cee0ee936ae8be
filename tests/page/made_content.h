// A content whose answers a test makes, and which remembers what it was asked.
#ifndef TAVMIR_TESTS_PAGE_MADE_CONTENT_H
#define TAVMIR_TESTS_PAGE_MADE_CONTENT_H

#include "page/page_content.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace tavmir::page
{

// "status" answers {"fine":1}, "echo" the query, "long" as many bytes as said, "file" a file,
// "broken" throws; of orders "write" echoes, "later" is answered when the test says so, "broken"
// throws. The sequence is what the test says.
class MadeContent : public PageContent
{
public:
    Answer get(const std::string& what, const Query& query) override;
    void post(const std::string& what, const std::string& body, Done done) override;
    void look() override;
    void keepUp() override;
    std::string epoch() const override { return "e1"; }
    std::uint64_t sequence() const override { return seen_; }
    std::string snapshot() override;
    std::string changes(std::uint64_t since, std::uint64_t eventsSince) override;

    // From the test's thread.
    void setSequence(std::uint64_t sequence) { next_ = sequence; }
    // Bytes that each snapshot and each message of changes has beside its words.
    void setPadding(std::size_t bytes) { padding_ = bytes; }
    int looks() const { return looks_; }
    int keptUp() const { return keptUp_; }
    int niceness() const { return niceness_; } // of the server's thread at the last look
    int snapshots() const { return snapshots_; }
    int changesMade() const { return changes_; }
    bool wasCalledByOneThread() const { return !isByOthers_; }
    // The answer that "later" waits for; empty: none does.
    Done takeWaiting();

private:
    void noteThread();

    std::atomic<std::uint64_t> next_{1};
    std::uint64_t seen_ = 1; // the server's thread
    std::atomic<std::size_t> padding_{0};
    std::atomic<int> looks_{0};
    std::atomic<int> keptUp_{0};
    std::atomic<int> niceness_{0};
    std::atomic<int> snapshots_{0};
    std::atomic<int> changes_{0};
    std::thread::id caller_; // the first
    std::atomic<bool> isByOthers_{false};
    std::mutex mutex_;
    Done waiting_;
};

} // namespace tavmir::page

#endif
