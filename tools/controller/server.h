// The controller's TCP side: takes clients on and, for a fault, goes away for a while.
//
//   constructed → listen → clients come and go → deleted (all connections are dropped)
//
// Everything happens on the thread that it lives on, driven by that thread's event loop.
#ifndef TAVMIR_CONTROLLER_SERVER_H
#define TAVMIR_CONTROLLER_SERVER_H

#include "client_session.h"
#include "server_settings.h"
#include "simulation.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <memory>
#include <set>

namespace tavmir::controller
{

class Server : public QObject
{
public:
    // The simulation must outlive the server.
    Server(const ServerSettings& settings, Simulation& simulation);
    ~Server() override;

    // Port 0: any free one. False: it cannot be had, errorText says why.
    bool listen(const QHostAddress& address, quint16 port);
    QString errorText() const { return tcpServer_.errorString(); }

    // Where it listens, also while it refuses connections; port 0 before listen.
    QHostAddress address() const { return address_; }
    quint16 port() const { return port_; }

    int clientCount() const { return static_cast<int>(sessions_.size()); }

    // Closes all connections and refuses new ones for ServerSettings::refuseMs. The port stays
    // this server's.
    void refuseForAWhile();
    // The same until it is to admit again.
    void refuse();
    void admit();
    // Closes all connections; new ones are taken.
    void closeAll();
    bool isRefusing() const { return port_ != 0 && !tcpServer_.isListening(); }

private:
    void takeClients();
    void takeClient(QTcpSocket* socket);
    void listenAgain();

    ServerSettings settings_;
    Simulation& simulation_;
    QTcpServer tcpServer_;
    QHostAddress address_;
    quint16 port_ = 0;
    std::set<ClientSession*> sessions_;
    int lastClientNumber_ = 0;
    std::unique_ptr<QTcpSocket> portKeeper_; // bound, not listening: connections are refused
    QTimer listenAgainTimer_;
};

} // namespace tavmir::controller

#endif
