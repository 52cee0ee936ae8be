// The thread, the listening socket and the clock of the server.
#include "page_server.h"

#include "connections.h"
#include "listening.h"
#include "polling_first.h"
#include "token.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <mutex>
#include <optional>
#include <thread>

namespace tavmir::page
{

using boost::asio::ip::tcp;

class PageServer::Impl
{
public:
    Impl(PageContent& content, PageServerOptions options)
        : content_(content), options_(std::move(options)), acceptor_(context_), ticks_(context_),
          keepUps_(context_), pause_(context_), leave_(context_)
    {
    }
    ~Impl() { stop(); }

    bool start(std::string& problem);
    void stop();

    const AccessRules& rules() const { return connections_->service().rules; }
    unsigned short port() const { return endpoint_.port(); }
    int clients() const { return connections_->count(); }

private:
    using Error = boost::system::error_code;

    void run();
    void accept();
    void onClient(Error error, Socket socket);
    void tickLater();
    void keepUpLater();
    void goAway();
    void leaveLater();

    PageContent& content_;
    PageServerOptions options_;
    boost::asio::io_context context_{1};
    tcp::acceptor acceptor_;
    tcp::endpoint endpoint_;
    boost::asio::steady_timer ticks_;
    boost::asio::steady_timer keepUps_;
    boost::asio::steady_timer pause_;
    boost::asio::steady_timer leave_;
    std::optional<Connections> connections_;
    std::mutex stopping_;
    std::thread thread_;
    bool isLeaving_ = false; // the server's thread
    Clock::time_point leaveBy_;
};

bool PageServer::Impl::start(std::string& problem)
{
    if (options_.token.empty()) {
        options_.token = makeToken();
    }
    if (options_.token.empty()) {
        problem = "the system gives no random numbers for the page's token";
        return false;
    }
    const ListeningPlace place = {options_.address, options_.port, options_.isWritable};
    if (!listenAt(place, acceptor_, problem)) {
        return false;
    }
    endpoint_ = acceptor_.local_endpoint();
    const Assets& assets = options_.assets != nullptr ? *options_.assets : builtInAssets();
    connections_.emplace(context_,
                         Service{content_, assets,
                                 AccessRules(options_.address, endpoint_.address().is_unspecified(),
                                             endpoint_.port(), options_.token),
                                 options_.limits});
    thread_ = std::thread([this] { run(); });
    return true;
}

void PageServer::Impl::run()
{
    letPollingGoFirst();
    accept();
    tickLater();
    keepUpLater();
    context_.run();
}

void PageServer::Impl::accept()
{
    acceptor_.async_accept(
        [this](Error error, Socket socket) { onClient(error, std::move(socket)); });
}

void PageServer::Impl::onClient(Error error, Socket socket)
{
    if (isLeaving_) {
        return;
    }
    if (error && error != boost::asio::error::connection_aborted) {
        // There is no descriptor left: trying again at once would find none either.
        pause_.expires_after(options_.limits.acceptPause);
        pause_.async_wait([this](Error stopped) {
            if (!stopped) {
                accept();
            }
        });
        return;
    }
    accept();
    if (!error) {
        connections_->take(std::move(socket));
    }
}

void PageServer::Impl::tickLater()
{
    ticks_.expires_after(options_.limits.lookEvery);
    ticks_.async_wait([this](Error stopped) {
        if (!stopped && !isLeaving_) {
            tickLater();
            connections_->tick();
        }
    });
}

void PageServer::Impl::keepUpLater()
{
    keepUps_.expires_after(options_.limits.keepUpEvery);
    keepUps_.async_wait([this](Error stopped) {
        if (!stopped && !isLeaving_) {
            keepUpLater();
            content_.keepUp();
        }
    });
}

void PageServer::Impl::goAway()
{
    isLeaving_ = true;
    Error ignored;
    acceptor_.close(ignored);
    ticks_.cancel();
    keepUps_.cancel();
    pause_.cancel();
    leaveBy_ = Clock::now() + options_.limits.closeTime;
    connections_->goAway();
    leaveLater();
}

// Until the last client has taken leave, or for as long as that may last.
void PageServer::Impl::leaveLater()
{
    if (connections_->isEmpty() || Clock::now() >= leaveBy_) {
        connections_->dropAll();
        return; // nothing is left to do, which ends run()
    }
    leave_.expires_after(std::chrono::milliseconds(5));
    leave_.async_wait([this](Error) { leaveLater(); });
}

void PageServer::Impl::stop()
{
    const std::lock_guard<std::mutex> lock(stopping_);
    if (!thread_.joinable()) {
        return;
    }
    boost::asio::post(context_, [this] { goAway(); });
    thread_.join();
}

PageServer::PageServer(PageContent& content, PageServerOptions options)
    : impl_(std::make_unique<Impl>(content, std::move(options)))
{
}

PageServer::~PageServer() = default;

bool PageServer::start(std::string& problem)
{
    return impl_->start(problem);
}

unsigned short PageServer::port() const
{
    return impl_->port();
}

const std::string& PageServer::token() const
{
    return impl_->rules().token();
}

std::string PageServer::url() const
{
    return "http://" + impl_->rules().place() + "/#token=" + impl_->rules().token();
}

int PageServer::clients() const
{
    return impl_->clients();
}

void PageServer::stop()
{
    impl_->stop();
}

} // namespace tavmir::page
