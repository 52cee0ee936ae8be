// How an operation, a write or a one-shot read that a host asked for, ended.
#ifndef TAVMIR_FEED_OUTCOME_H
#define TAVMIR_FEED_OUTCOME_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace tavmir::host
{

enum class OperationKind { write, read };

// Over all attempts and all requests that the operation took.
enum class OutcomeState {
    done,    // all of it
    refused, // the controller answered that it will not
    notSent, // no byte of it left the host
    unknown, // some attempt was sent and never answered: it may have been carried out
    partial  // some elements were acknowledged, the rest as the reason says
};
constexpr int kOutcomeStates = 5;

// "done", "refused", "not sent", "unknown", "partial".
const char* outcomeWord(OutcomeState state);

struct Outcome {
    OutcomeState state = OutcomeState::notSent;
    QString reason;       // why not done; of what is done, how, when that is worth a word
    int elements = 0;     // on the wire
    int acknowledged = 0; // of them
    QByteArray bytes;     // of a read: what its own replies brought, element by element, each
                          // least significant byte first; zeros for what did not come

    bool ok() const { return state == OutcomeState::done; }
};

// "refused: the controller refused the request: exception 2 (illegal data address)"; "done"
// alone when there is no reason.
QString outcomeInWords(const Outcome& outcome);

} // namespace tavmir::host

#endif
