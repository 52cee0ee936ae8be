#include "server.h"

#include <algorithm>
#include <utility>

namespace tavmir::controller
{

namespace
{
constexpr int kPauseBeforeNextTryMs = 100;
} // namespace

Server::Server(const ServerSettings& settings, Simulation& simulation)
    : settings_(settings), simulation_(simulation)
{
    listenAgainTimer_.setSingleShot(true);
    connect(&listenAgainTimer_, &QTimer::timeout, this, [this] { listenAgain(); });
    connect(&tcpServer_, &QTcpServer::newConnection, this, [this] { takeClients(); });
    connect(&tcpServer_, &QTcpServer::acceptError, this, [this] {
        // Qt stops accepting when the process is out of descriptors; clients that leave give some
        // back.
        settings_.log(QString("cannot take a client: %1").arg(tcpServer_.errorString()));
        QTimer::singleShot(kPauseBeforeNextTryMs, this, [this] { tcpServer_.resumeAccepting(); });
    });
}

Server::~Server()
{
    closeAll();
}

bool Server::listen(const QHostAddress& address, quint16 port)
{
    if (!tcpServer_.listen(address, port)) {
        return false;
    }
    address_ = tcpServer_.serverAddress();
    port_ = tcpServer_.serverPort();
    return true;
}

void Server::takeClients()
{
    while (QTcpSocket* socket = tcpServer_.nextPendingConnection()) {
        takeClient(socket);
    }
}

void Server::takeClient(QTcpSocket* socket)
{
    Statistics& statistics = simulation_.statistics();
    if (clientCount() >= settings_.mostClients) {
        ++statistics.clientsRefused;
        settings_.log(QString("a client from %1 port %2 is refused: %3 are connected")
                          .arg(socket->peerAddress().toString())
                          .arg(socket->peerPort())
                          .arg(clientCount()));
        ClientCapture(*socket, settings_).closed("refused: too many clients are connected");
        socket->abort();
        socket->deleteLater();
        return;
    }
    ++statistics.clients;
    ClientSession::Events events;
    events.finished = [this](ClientSession* session) {
        sessions_.erase(session);
        session->deleteLater();
    };
    events.refuse = [this] { refuseForAWhile(); };
    auto* session = new ClientSession(socket, ++lastClientNumber_, settings_, simulation_,
                                      std::move(events), this);
    sessions_.insert(session);
    statistics.clientsAtOnce =
        std::max(statistics.clientsAtOnce, static_cast<std::uint64_t>(clientCount()));
    session->start();
}

void Server::refuseForAWhile()
{
    if (!tcpServer_.isListening()) {
        return;
    }
    settings_.log(QString("connections are refused for %1 ms").arg(settings_.refuseMs));
    refuse();
    listenAgainTimer_.start(settings_.refuseMs);
}

void Server::refuse()
{
    if (!tcpServer_.isListening()) {
        return;
    }
    tcpServer_.close();
    // A socket that is bound but does not listen keeps the port from other programs.
    portKeeper_ = std::make_unique<QTcpSocket>();
    portKeeper_->bind(address_, port_, QAbstractSocket::ReuseAddressHint);
    closeAll();
}

void Server::admit()
{
    if (isRefusing()) {
        listenAgain();
    }
}

void Server::listenAgain()
{
    if (!tcpServer_.listen(address_, port_)) {
        settings_.log(QString("cannot listen again: %1").arg(tcpServer_.errorString()));
        listenAgainTimer_.start(kPauseBeforeNextTryMs);
        return;
    }
    portKeeper_.reset();
}

void Server::closeAll()
{
    const std::set<ClientSession*> sessions = sessions_;
    for (ClientSession* session : sessions) {
        session->close();
    }
}

} // namespace tavmir::controller
