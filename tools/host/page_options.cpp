// Added, taken, checked.
#include "page_options.h"

#include "project/printable.h"
#include "wire/endpoint.h"

#include <QtCore/QCommandLineParser>

namespace tavmir::host
{

using project::printable;

void addPageOptions(QCommandLineParser& parser)
{
    parser.addOption({"page",
                      "Show all this in the browser too. Listens on this machine only, at any free "
                      "port, unless HOST:PORT says otherwise; prints the page's address.",
                      "HOST:PORT"});
    parser.addOption({"open", "Open the page in the browser."});
    parser.addOption({"allow-writes",
                      "Let the page write; with addresses, divided by commas, only to them.",
                      "ADDRESSES"});
}

bool mayStandAlone(const QString& argument)
{
    return argument == "--page" || argument == "--allow-writes";
}

QStringList splitAddresses(const QString& text)
{
    QStringList addresses = {QString("")};
    int depth = 0;
    for (const QChar character : text) {
        depth += character == '[' ? 1 : character == ']' ? -1 : 0;
        if (character == ',' && depth <= 0) {
            addresses << QString("");
        } else {
            addresses.last() += character;
        }
    }
    return addresses;
}

void takePlace(const QCommandLineParser& parser, PageOptions& page, QString& problem)
{
    page.isOn = parser.isSet("page");
    page.opens = parser.isSet("open");
    const QString place = parser.value("page");
    wire::Endpoint endpoint;
    if (place.isEmpty()) {
        return;
    }
    if (!wire::parseEndpoint(place.toStdString(), 0, endpoint)) {
        problem =
            QString("--page=%1: must be HOST:PORT; port 0 is any free one").arg(printable(place));
        return;
    }
    page.host = QString::fromStdString(endpoint.host);
    page.port = endpoint.port;
}

void takePage(const QCommandLineParser& parser, PageOptions& page, QString& problem)
{
    page.isOn = parser.isSet("page");
    page.allowsWrites = parser.isSet("allow-writes");
    for (const char* option : {"open", "allow-writes"}) {
        if (parser.isSet(option) && !page.isOn && problem.isEmpty()) {
            problem = QString("--%1: is said of the page, so --page is needed").arg(option);
        }
    }
    if (!problem.isEmpty()) {
        return;
    }
    takePlace(parser, page, problem);
    if (!problem.isEmpty()) {
        return;
    }
    const QString writable = parser.value("allow-writes");
    if (!writable.isEmpty()) {
        page.writable = splitAddresses(writable);
    }
}

} // namespace tavmir::host
