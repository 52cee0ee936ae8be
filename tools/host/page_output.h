// The page of a run: what it shows, who carries its writes out, and its server. Trouble with the
// page never ends a run.
//
//   construct ─▶ open ─▶ (session starts) … (session is closed) ─▶ close
#ifndef TAVMIR_HOST_PAGE_OUTPUT_H
#define TAVMIR_HOST_PAGE_OUTPUT_H

#include "prepared_host.h"

#include <memory>

namespace tavmir::host
{

class PageOutput
{
public:
    // host  has its session open; outlives it
    explicit PageOutput(PreparedHost& host);
    // Closes it.
    ~PageOutput();
    PageOutput(const PageOutput&) = delete;
    PageOutput& operator=(const PageOutput&) = delete;

    // Empty, or why there never can be a page in this program.
    static QString refusal();

    // Before the session starts. Empty, or why there is no page: an address that the project does
    // not have, a port that is taken, writes beyond this machine. Without --page nothing happens.
    QString open();

    // Where it is, with its token; null without --page.
    QString url() const;

    // Opens the browser where that is wanted. Empty, or why it cannot be.
    QString openBrowser();
    // The same of one that could not be opened after all, once.
    QString takeProblem();

    // The recording cannot be written, or can be again. Any thread.
    void tellStorage(const QString& text);

    // Clients are told that the program goes. What still waits to be written ends first, so the
    // session must be closed.
    void close();

private:
    class Page;

    PreparedHost& host_;
    std::unique_ptr<Page> page_;
};

} // namespace tavmir::host

#endif
