// Lines from a descriptor, with an end that another thread can bring about.
#ifndef TAVMIR_HOST_LINE_READER_H
#define TAVMIR_HOST_LINE_READER_H

#include "link/wake_event.h"

#include <QtCore/QByteArray>

#include <atomic>
#include <optional>

namespace tavmir::host
{

class LineReader
{
public:
    static constexpr int kMaxLineBytes = 65536; // a longer line comes in pieces

    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    // The next line without its end; none at the end of the input or after stop().
    std::optional<QByteArray> next();

    // Any thread.
    void stop()
    {
        stopped_ = true;
        stop_.wake();
    }

private:
    int descriptor_;
    WakeEvent stop_;
    std::atomic<bool> stopped_{false};
    QByteArray buffer_;
    bool ended_ = false;
};

} // namespace tavmir::host

#endif
