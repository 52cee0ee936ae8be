// Orders of the page: what is checked here, and what becomes an event.
#include "live_content.h"
#include "polled_place.h"
#include "project/raw_address.h"
#include "query_numbers.h"

namespace tavmir::host
{

namespace
{

QString orEmpty(const QString& text)
{
    return text.isEmpty() ? QString("empty") : text;
}

} // namespace

void LiveContent::post(const std::string& what, const std::string& body, Done done)
{
    if (what == "write") {
        write(body, done);
    } else {
        done(problem(404, "there is nothing of this name"));
    }
}

void LiveContent::write(const std::string& body, const Done& done)
{
    if (desk_ == nullptr || !desk_->isOpen()) {
        done(problem(403, "writes are off: the program was started without --allow-writes"));
        return;
    }
    look(); // what stands there is to be the latest
    const ParsedWrite parsed = parseWrite(body);
    if (!parsed.problem.isEmpty()) {
        done(problem(400, parsed.problem));
        return;
    }
    const PageWrite& asked = parsed.write;
    const project::Resolution named = project::resolveNamed(project_, asked.address);
    if (!named.ok) {
        done(problem(400, QString("address \"%1\": %2").arg(asked.address, named.problem)));
        return;
    }
    if (!desk_->permits(named.element)) {
        done(problem(403, QString("%1: may not be written").arg(asked.address)));
        return;
    }
    const int station = index_.stationOf(named.element);
    const std::optional<size_t> place = placeOfMemory(state_.polled(), named.element, station);
    const QString old = place ? state_.rows().text(*place) : QString();
    if (asked.expect && (!place || *asked.expect != old)) {
        done(problem(409, unexpected(asked, named.element, place)));
        return;
    }
    const WireElement element = wireElements(named.element, station).front();
    const QString name = place ? state_.polled()[*place].name : asked.address;
    const QString address = project::shownAddress(named.element);
    state_.feedEvents().tellsItself(element);
    const auto refusal =
        desk_->write(asked, [this, element, address, name, old, done](const WriteEnd& end) {
            tell(element, address, name, end);
            done(answerOf(writeJson(end, old)));
        });
    if (refusal) {
        state_.feedEvents().forget(element);
        done(problem(refusal->status, refusal->problem));
    }
}

// Why what was expected does not hold, or cannot be known to.
QString LiveContent::unexpected(const PageWrite& asked, const project::Element& named,
                                const std::optional<size_t>& place) const
{
    if (!place) {
        return QString("%1: is not polled, so whether it is %2 is not known")
            .arg(asked.address, orEmpty(*asked.expect));
    }
    const QString shown = orEmpty(state_.rows().text(*place));
    const QString expected = orEmpty(*asked.expect);
    if (placeOfVariable(state_.polled(), named)) {
        return QString("%1: is %2 by now, not %3").arg(asked.address, shown, expected);
    }
    return QString("%1: %2 is there, which is shown as %3, not %4")
        .arg(asked.address, state_.polled()[*place].name, shown, expected);
}

void LiveContent::tell(const WireElement& element, const QString& address, const QString& name,
                       const WriteEnd& end)
{
    Told told;
    told.element = element;
    told.event.at = now();
    told.event.kind = "write";
    told.event.text = end.line + " (from the page)";
    told.event.variable = name;
    told.event.address = address;
    told.event.bad = !end.outcome.ok();
    const std::lock_guard<std::mutex> lock(mutex_);
    told_.push_back(told);
}

} // namespace tavmir::host
