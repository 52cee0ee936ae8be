// poll and read.
#include "line_reader.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace tavmir::host
{

std::optional<QByteArray> LineReader::next()
{
    while (!stopped_) {
        const int end = buffer_.indexOf('\n');
        if (end >= 0 || buffer_.size() >= kMaxLineBytes || (ended_ && !buffer_.isEmpty())) {
            const QByteArray line = end >= 0 ? buffer_.left(end) : buffer_;
            buffer_.remove(0, end >= 0 ? end + 1 : buffer_.size());
            return line;
        }
        if (ended_) {
            return std::nullopt;
        }
        pollfd waits[2] = {{descriptor_, POLLIN, 0}, {stop_.descriptor(), POLLIN, 0}};
        if (::poll(waits, 2, -1) < 0 && errno == EINTR) {
            continue;
        }
        if (waits[1].revents != 0) {
            return std::nullopt;
        }
        char bytes[4096];
        const ssize_t got = ::read(descriptor_, bytes, sizeof bytes);
        if (got > 0) {
            buffer_.append(bytes, static_cast<int>(got));
        } else if (got == 0 || errno != EINTR) {
            ended_ = true;
        }
    }
    return std::nullopt;
}

} // namespace tavmir::host
