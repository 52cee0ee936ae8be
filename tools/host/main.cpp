// tavmir-host: loads the driver as a panel does and works with a controller.
#include "program.h"

#include <QtCore/QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("tavmir-host");
    return tavmir::host::runProgram(QCoreApplication::arguments());
}
