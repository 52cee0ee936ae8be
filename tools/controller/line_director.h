// Who plays the controller's part towards its clients in place of the faults, and sees what passes.
// Called on the server's thread; may close the session that it is called with.
#ifndef TAVMIR_CONTROLLER_LINE_DIRECTOR_H
#define TAVMIR_CONTROLLER_LINE_DIRECTOR_H

#include "simulation.h"

#include <QtCore/QByteArray>

namespace tavmir::controller
{

class ClientSession;

class LineDirector
{
public:
    virtual void connected(ClientSession& session) = 0;
    // Bytes as they came, before anything is made of them.
    virtual void received(ClientSession& session, const QByteArray& bytes) = 0;
    // A request; what is said to it is the director's to say.
    virtual void asked(ClientSession& session, const QByteArray& request,
                       const Simulation::Outcome& outcome) = 0;
    // Nothing more comes of this session.
    virtual void ended(ClientSession& session, bool byClient) = 0;

protected:
    ~LineDirector() = default;
};

} // namespace tavmir::controller

#endif
