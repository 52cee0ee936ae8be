// Answers short enough to be compared as texts.
#include "made_content.h"

#include <sys/resource.h>

#include <stdexcept>

namespace tavmir::page
{

namespace
{

Answer answerOf(unsigned status, std::string body)
{
    Answer answer;
    answer.status = status;
    answer.body = std::move(body);
    return answer;
}

std::string number(std::uint64_t value)
{
    return std::to_string(value);
}

} // namespace

void MadeContent::noteThread()
{
    if (caller_ == std::thread::id()) {
        caller_ = std::this_thread::get_id();
    }
    if (caller_ != std::this_thread::get_id()) {
        isByOthers_ = true;
    }
}

Answer MadeContent::get(const std::string& what, const Query& query)
{
    noteThread();
    if (what == "status") {
        return answerOf(200, "{\"fine\":1}");
    }
    if (what == "echo") {
        std::string text;
        for (const auto& item : query.items) {
            text += item.first + "=" + item.second + ";";
        }
        return answerOf(200, text);
    }
    if (what == "long") {
        return answerOf(200, std::string(std::stoul(*query.find("bytes")), 'x'));
    }
    if (what == "file") {
        Answer answer = answerOf(200, "bytes");
        answer.type = "application/octet-stream";
        answer.fileName = "last\"\r\nminute.pcapng";
        return answer;
    }
    if (what == "broken") {
        throw std::runtime_error("broken");
    }
    return answerOf(404, "{\"error\":\"unknown\"}");
}

void MadeContent::post(const std::string& what, const std::string& body, Done done)
{
    noteThread();
    if (what == "broken") {
        throw std::runtime_error("broken");
    }
    if (what == "write") {
        done(answerOf(200, body));
        done(answerOf(200, "a second answer"));
        return;
    }
    if (what == "later") {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_ = std::move(done);
        return;
    }
    done(answerOf(404, "{\"error\":\"unknown\"}"));
}

PageContent::Done MadeContent::takeWaiting()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Done waiting;
    waiting.swap(waiting_);
    return waiting;
}

void MadeContent::look()
{
    noteThread();
    seen_ = next_;
    niceness_ = getpriority(PRIO_PROCESS, 0);
    ++looks_;
}

void MadeContent::keepUp()
{
    noteThread();
    ++keptUp_;
}

std::string MadeContent::snapshot()
{
    noteThread();
    ++snapshots_;
    return "snapshot " + number(seen_) + std::string(padding_, '.');
}

std::string MadeContent::changes(std::uint64_t since, std::uint64_t eventsSince)
{
    noteThread();
    if (since == seen_ || since != eventsSince) {
        return std::string();
    }
    ++changes_;
    return "changes " + number(since) + "-" + number(seen_) + std::string(padding_, '.');
}

} // namespace tavmir::page
