// tavmir-controller: a simulated controller to run the driver against.
#include "options.h"
#include "run_controller.h"

#include <QtCore/QCoreApplication>

#include <csignal>
#include <cstdio>

int main(int argc, char** argv)
{
    using namespace tavmir::controller;
    // Whoever reads the output may leave; that ends a print, not the controller.
    std::signal(SIGPIPE, SIG_IGN);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("tavmir-controller");
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (!line.printOnly.isEmpty()) {
        std::fputs(line.printOnly.toUtf8().constData(), stdout);
        return kExitDone;
    }
    if (!line.problem.isEmpty()) {
        std::fprintf(stderr, "tavmir-controller: %s\n", line.problem.toUtf8().constData());
        return kExitBadInput;
    }
    return runController(line.options);
}
