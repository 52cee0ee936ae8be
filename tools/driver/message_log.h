// Where the driver's diagnostic lines go: nowhere, or into the driver's own log file. Warnings
// and worse always go to standard error.
#ifndef TAVMIR_DRIVER_MESSAGE_LOG_H
#define TAVMIR_DRIVER_MESSAGE_LOG_H

#include "driver_loader.h"

namespace tavmir::host
{

// Installed from construction to destruction; one at a time. Construct it before the driver is
// loaded, so that the lines of loading do not spill onto the terminal, and destroy it after the
// driver is unloaded.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    // From now on every line is given to the driver's handler, which appends it to its file.
    // Call closeDriverFile before the driver is unloaded.
    void openDriverFile(const DriverApi& api);
    void closeDriverFile();

private:
    QtMessageHandler previous_;
};

} // namespace tavmir::host

#endif
