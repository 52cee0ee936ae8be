// The way back onto the server's thread, from any thread, also when the server has gone.
#ifndef TAVMIR_PAGE_RETURN_PATH_H
#define TAVMIR_PAGE_RETURN_PATH_H

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <mutex>
#include <utility>

namespace tavmir::page
{

class ReturnPath
{
public:
    // context  outlives close()
    explicit ReturnPath(boost::asio::io_context& context) : context_(&context) {}

    // Runs `work` on the server's thread, or never.
    template <typename Work> void post(Work work)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (context_ != nullptr) {
            boost::asio::post(*context_, std::move(work));
        }
    }

    void close()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        context_ = nullptr;
    }

private:
    std::mutex mutex_;
    boost::asio::io_context* context_;
};

} // namespace tavmir::page

#endif
