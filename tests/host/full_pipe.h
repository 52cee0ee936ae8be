// A named pipe that is full: whoever writes to it waits until the test takes something out.
#ifndef TAVMIR_TESTS_HOST_FULL_PIPE_H
#define TAVMIR_TESTS_HOST_FULL_PIPE_H

#include "support/temporary_folder.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <functional>

namespace tavmir::host
{

class FullPipe
{
public:
    FullPipe();
    ~FullPipe();
    FullPipe(const FullPipe&) = delete;
    FullPipe& operator=(const FullPipe&) = delete;

    // For a program's standard output.
    QString path() const { return path_; }

    // Takes out what is in it until that holds what is wanted; the filling, empty lines, is left
    // out. False: it never did.
    bool gives(const std::function<bool(const QByteArray&)>& wanted);

    const QByteArray& taken() const { return taken_; }

private:
    test::TemporaryFolder folder_;
    QString path_;
    int descriptor_;
    QByteArray taken_;
    bool filling_ = true;
};

} // namespace tavmir::host

#endif
