// Content and server of a recording.
#include "browser.h"
#include "command_replay.h"
#include "complain.h"
#include "console.h"
#include "exit_status.h"
#include "page/page_server.h"
#include "replay_content.h"

namespace tavmir::host
{

namespace
{

constexpr int kLookMs = 200;

} // namespace

int serveReplay(const QString& folder, const PageOptions& page)
{
    wire::StopSignal stop;
    ReplayOptions options;
    options.folder = folder;
    options.version = TAVMIR_VERSION;
    QString problem;
    const std::unique_ptr<ReplayContent> content = ReplayContent::open(options, problem);
    if (!content) {
        complain(problem);
        return kExitBadInput;
    }
    page::PageServerOptions place;
    place.address = page.host.toStdString();
    place.port = static_cast<unsigned short>(page.port);
    page::PageServer server(*content, place);
    std::string taken;
    if (!server.start(taken)) {
        complain("--page: " + QString::fromStdString(taken));
        return kExitBadInput;
    }
    Console console;
    Browser browser;
    const QString url = QString::fromStdString(server.url());
    console.print(url);
    if (page.opens) {
        problem = browser.open(url);
    }
    while (!stop.waitMs(kLookMs)) {
        problem += browser.takeProblem();
        if (!problem.isEmpty()) {
            console.complain(problem);
            problem.clear();
        }
    }
    server.stop();
    return console.finishSoon() ? kExitOk : kExitFailed;
}

} // namespace tavmir::host
