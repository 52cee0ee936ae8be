// A queue and its thread.
#include "page_writes.h"

#include "project/counted.h"
#include "project/raw_address.h"
#include "project/value_format.h"
#include "read_back.h"

namespace tavmir::host
{

PageWrites::PageWrites(PreparedHost& host) : host_(host) {}

PageWrites::~PageWrites()
{
    stop();
}

QString PageWrites::open()
{
    const PageOptions& options = host_.line().page;
    for (const QString& address : options.writable) {
        const project::Expansion expansion = project::expandNamed(host_.project(), address);
        if (!expansion.ok) {
            return QString("--allow-writes: address \"%1\": %2")
                .arg(printable(address), expansion.problem);
        }
        for (const project::Element& element : expansion.elements) {
            only_ << project::shownAddress(element);
        }
    }
    isOpen_ = options.allowsWrites;
    if (isOpen_) {
        thread_ = std::thread([this] { loop(); });
    }
    return QString();
}

void PageWrites::stop()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isStopping_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool PageWrites::permits(const project::Element& element) const
{
    return isOpen_ && (only_.isEmpty() || only_.contains(project::shownAddress(element)));
}

QString PageWrites::words() const
{
    if (!isOpen_) {
        return "off";
    }
    return only_.isEmpty() ? QString("on")
                           : "on for " + project::counted(static_cast<quint64>(only_.size()),
                                                          "address", "addresses");
}

std::optional<WriteDesk::Refusal> PageWrites::write(const PageWrite& write, Done done)
{
    const Assignment assignment = parseAssignment(host_.project(), host_.polled(), write.address,
                                                  write.value, project::Format::automatic);
    if (!assignment.problem.isEmpty()) {
        return Refusal{400, assignment.problem};
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isStopping_) {
        return Refusal{503, "the host stops"};
    }
    if (waiting_.size() >= kMostWaiting) {
        return Refusal{503, QString("%1 writes are waiting already").arg(kMostWaiting)};
    }
    waiting_.push_back({assignment, std::move(done)});
    changed_.notify_all();
    return std::nullopt;
}

void PageWrites::loop()
{
    for (;;) {
        Waiting next;
        bool isStopping = false;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] { return isStopping_ || !waiting_.empty(); });
            if (waiting_.empty()) {
                return;
            }
            next = std::move(waiting_.front());
            waiting_.pop_front();
            isStopping = isStopping_;
        }
        if (isStopping) {
            WriteEnd end;
            end.outcome.reason = "the host stops";
            end.text = end.outcome.reason;
            end.line = writeResult(next.assignment, end.outcome);
            next.done(end);
        } else {
            next.done(carriedOut(next.assignment));
        }
    }
}

WriteEnd PageWrites::carriedOut(const Assignment& assignment)
{
    WriteReport report;
    report.outcome =
        host_.session().write(assignment.element, assignment.bytes, Deadline(host_.operationMs()));
    WriteEnd end;
    if (report.outcome.state != OutcomeState::notSent) {
        report.readBack = readBack(host_, assignment, project::Format::automatic);
        report.outcome = settled(report.outcome, *report.readBack);
        const ValueRow& row = report.readBack->row;
        ReadBackValue value;
        value.text = shownValue(row);
        value.quality = {row.quality, row.reason};
        if (!row.value.isNull()) {
            value.number =
                project::decodeNumber(assignment.element, row.format, report.readBack->bytes);
        }
        end.readBack = value;
    }
    end.outcome = report.outcome;
    end.text = report.outcome.reason.isEmpty() ? QString("written") : report.outcome.reason;
    end.line = writeLine(assignment, report);
    return end;
}

} // namespace tavmir::host
