// The past of values as a recording has it, also while it is written.
#ifndef TAVMIR_HOST_RECORDED_PAST_H
#define TAVMIR_HOST_RECORDED_PAST_H

#include "page/history_source.h"

namespace tavmir::host
{

class RecordedPast : public HistorySource
{
public:
    // folder  that is, was, or will be recorded into
    explicit RecordedPast(const QString& folder) : folder_(folder) {}

    // Reads the files that know something of the time: milliseconds, or seconds where one of them
    // has millions of samples of the variable. Where nothing is recorded, or the variable was not
    // polled, there is a gap.
    HistoryPiece history(const QString& address, qint64 from, qint64 to, size_t points) override;

private:
    const QString folder_;
};

} // namespace tavmir::host

#endif
