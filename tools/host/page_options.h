// What the command line says of the page.
#ifndef TAVMIR_HOST_PAGE_OPTIONS_H
#define TAVMIR_HOST_PAGE_OPTIONS_H

#include <QtCore/QStringList>

class QCommandLineParser;

namespace tavmir::host
{

struct PageOptions {
    bool isOn = false;
    QString host = "127.0.0.1";
    int port = 0; // 0: any free one
    bool opens = false;
    bool allowsWrites = false;
    QStringList writable; // addresses; empty with allowsWrites: all
};

void addPageOptions(QCommandLineParser& parser);
// True for those that may have a value or none.
bool mayStandAlone(const QString& argument);
void takePage(const QCommandLineParser& parser, PageOptions& page, QString& problem);
// Only where it is, and whether the browser is opened.
void takePlace(const QCommandLineParser& parser, PageOptions& page, QString& problem);

// "Main.A,Line2.Grid[1,C]" has two addresses: commas within brackets are their own.
QStringList splitAddresses(const QString& text);

} // namespace tavmir::host

#endif
