// The request in flight as the driver made it, held against what is found when the host comes
// back. Used on the communication thread only. Private.
#ifndef TAVMIR_CHECKED_IN_FLIGHT_H
#define TAVMIR_CHECKED_IN_FLIGHT_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{
namespace checked
{

class Call;

class InFlight
{
public:
    InFlight()
        : request_(nullptr), frameLength_(0), replyLength_(0), batch_(0), dataType_(0),
          cycleState_(0)
    {
    }

    // After ComCommunication has made a new request; null: there is none.
    void remember(const Protocol* request);

    // At the beginning of each of the cycle's calls: what the host has changed meanwhile.
    void compare(const Call& call);

    // At the beginning of DataCom, after `compare`: whether the reply is the request's.
    void checkReply(const QByteArray* reply, int received, const Call& call) const;

    bool isKnown() const { return request_ != nullptr; }
    int batch() const { return batch_; }
    int dataType() const { return dataType_; }
    qint32 address(int i) const { return addresses_[i]; }

private:
    enum { kHeaderBytes = 9, kComparedBytes = 8 };

    bool isThisRequest(const Protocol& request) const;
    void compareEntries(const QList<RW_VAR>& list, const Call& call) const;
    void checkAddresses(const QByteArray& reply, const Call& call) const;

    const Protocol* request_;
    unsigned char header_[kHeaderBytes];
    qint32 frameLength_;
    qint32 replyLength_;
    int batch_;
    int dataType_;
    int cycleState_;
    const RW_VAR* entries_[255];
    qint32 addresses_[255];
};

// The one of the communication thread.
extern InFlight inFlight;

} // namespace checked
} // namespace tavmir

#endif
