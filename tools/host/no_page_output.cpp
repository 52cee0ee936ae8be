// In the place of page_output.cpp and serve_replay.cpp where the page is not built.
#include "command_replay.h"
#include "complain.h"
#include "exit_status.h"
#include "page_output.h"

namespace tavmir::host
{

class PageOutput::Page
{
};

PageOutput::PageOutput(PreparedHost& host) : host_(host) {}

PageOutput::~PageOutput() = default;

QString PageOutput::refusal()
{
    return "--page: this build has no page";
}

QString PageOutput::open()
{
    return host_.line().page.isOn ? refusal() : QString();
}

QString PageOutput::url() const
{
    return QString();
}

QString PageOutput::openBrowser()
{
    return QString();
}

QString PageOutput::takeProblem()
{
    return QString();
}

void PageOutput::tellStorage(const QString&) {}

void PageOutput::close() {}

int serveReplay(const QString&, const PageOptions&)
{
    complain(PageOutput::refusal());
    return kExitBadInput;
}

} // namespace tavmir::host
