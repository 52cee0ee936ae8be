// Descriptors exchanged for files in memory.
#include "captured_console.h"

#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

std::string contentOf(int file)
{
    std::string text(static_cast<size_t>(::lseek(file, 0, SEEK_END)), '\0');
    const ssize_t size = ::pread(file, &text[0], text.size(), 0);
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return text;
}

} // namespace

CapturedConsole::CapturedConsole(int output)
    : ownOut_(::dup(STDOUT_FILENO)), ownErr_(::dup(STDERR_FILENO)),
      outFile_(::memfd_create("output", 0)), errFile_(::memfd_create("error", 0))
{
    std::fflush(stdout);
    ::dup2(output < 0 ? outFile_ : output, STDOUT_FILENO);
    ::dup2(errFile_, STDERR_FILENO);
    console_.emplace();
}

CapturedConsole::~CapturedConsole()
{
    if (console_) {
        finish();
    }
    for (const int descriptor : {ownOut_, ownErr_, outFile_, errFile_}) {
        ::close(descriptor);
    }
}

bool CapturedConsole::finish()
{
    const bool whole = console_->finishSoon();
    console_.reset();
    ::dup2(ownOut_, STDOUT_FILENO);
    ::dup2(ownErr_, STDERR_FILENO);
    out_ = contentOf(outFile_);
    err_ = contentOf(errFile_);
    return whole;
}

} // namespace tavmir::host
