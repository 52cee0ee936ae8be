// The command line of tavmir-controller.
#ifndef TAVMIR_CONTROLLER_OPTIONS_H
#define TAVMIR_CONTROLLER_OPTIONS_H

#include "admission.h"
#include "fault_plan.h"

#include "capture/capture_files.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

#include <cstdint>
#include <vector>

namespace tavmir::controller
{

struct Options {
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = 5020; // 0: any free one
    QString projectFile; // empty: none
    QString checkScript; // empty: no host is judged
    QString reportFile;  // of the judged host, as JSON; empty: none
    bool trace = false;
    std::vector<FaultRule> faults;
    std::uint64_t seed = 1;
    int delayMs = 50;
    int lateMs = 2000;
    int refuseMs = 1000;
    std::vector<RefuseRule> refused;
    capture::CaptureOptions capture; // its file empty: none is made
    AdmissionRules admission;        // without its refused ranges: they need the project
};

struct CommandLine {
    Options options;
    QString problem;   // not empty: one line, what is wrong
    QString printOnly; // not empty: print this and end (--help, --version)
};

// `arguments`: the program's name first. Needs the application object.
CommandLine parseCommandLine(const QStringList& arguments);

// "HOST:PORT"; HOST an IP address, one of IPv6 in brackets, or "localhost". False: it is neither.
bool parseEndpoint(const QString& text, QHostAddress* address, quint16* port);

// The same way round, for messages.
QString endpointText(const QHostAddress& address, quint16 port);

} // namespace tavmir::controller

#endif
