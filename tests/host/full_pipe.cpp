// mkfifo, and an end of it that neither waits nor is ever closed.
#include "full_pipe.h"

#include "support/wait_until.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavmir::host
{

FullPipe::FullPipe() : path_(QString::fromStdString(folder_.pathOf("pipe")))
{
    const QByteArray name = path_.toLocal8Bit();
    EXPECT_EQ(0, ::mkfifo(name.constData(), 0600));
    descriptor_ = ::open(name.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    EXPECT_GE(descriptor_, 0);
    const QByteArray lines(4096, '\n');
    while (::write(descriptor_, lines.constData(), 4096) > 0) {
    }
    while (::write(descriptor_, lines.constData(), 1) > 0) {
    }
}

FullPipe::~FullPipe()
{
    ::close(descriptor_);
}

bool FullPipe::gives(const std::function<bool(const QByteArray&)>& wanted)
{
    return test::waitUntil([&] {
        char bytes[4096];
        ssize_t got = 0;
        while ((got = ::read(descriptor_, bytes, sizeof bytes)) > 0) {
            taken_.append(bytes, static_cast<int>(got));
        }
        while (filling_ && taken_.startsWith('\n')) {
            taken_ = taken_.mid(1);
        }
        filling_ = filling_ && taken_.isEmpty();
        return wanted(taken_);
    });
}

} // namespace tavmir::host
