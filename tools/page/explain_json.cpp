// The steps, each in words, and what they come to.
#include "explain_json.h"

#include "explain_conclusion.h"
#include "explain_exchange.h"
#include "explain_request.h"
#include "json_writer.h"
#include "polled_place.h"
#include "project/printable.h"
#include "project/raw_address.h"
#include "project/type_words.h"
#include "project/value_format.h"
#include "value_rows.h"

namespace tavmir::host
{

namespace
{

// One variable through all steps.
class Explanation
{
public:
    Explanation(const ExplainFacts& facts, const QString& address) : facts_(facts)
    {
        place_ = placeOf(facts.values.variables(), address);
        if (!place_) {
            place_ = placeInOtherWords(address);
        }
        if (!place_) {
            explainUnpolled(address);
            return;
        }
        const PolledElement& variable = facts_.values.variables()[*place_];
        address_ = project::shownAddress(variable.element);
        name_ = variable.name;
        quality_ = facts_.values.quality(*place_, facts_.now);
        found_ = exchangesOf(facts_.kept, wireElements(variable.element, variable.station));
        add({"resolved", "Address", true,
             describe(variable.element) + ", shown as " + project::formatName(variable.format),
             QString()});
        addPolled();
        addStation(variable);
        request_ = sharedRequest(facts_, variable);
        add(request_.step);
        add(exchangeStep(facts_, found_, *place_));
        add(bytesStep(facts_, found_, *place_));
        addValue(variable);
        addAge();
        conclusion_ = conclude(variable);
    }

    std::string json() const
    {
        std::string out;
        JsonWriter json(out);
        json.beginObject().key("address").text(address_).key("name").text(name_);
        json.key("steps").beginArray();
        for (const ExplainStep& step : steps_) {
            json.beginObject().key("step").text(step.step).key("title").text(step.title);
            json.key("ok");
            step.ok ? json.boolean(*step.ok) : json.null();
            json.key("text").text(step.text).key("detail").textOrNull(step.detail);
            json.endObject();
        }
        json.endArray().key("conclusion").text(conclusion_).endObject();
        return out;
    }

private:
    void add(const ExplainStep& step) { steps_.push_back(step); }

    static QString describe(const project::Element& element)
    {
        return element.bitNumber ? QString("bit %1 of the %2 at bit address %3")
                                       .arg(*element.bitNumber)
                                       .arg(project::typeWord(element.type))
                                       .arg(element.address)
                                 : QString("a %1 at bit address %2")
                                       .arg(project::typeInWords(element))
                                       .arg(element.address);
    }

    std::optional<size_t> placeInOtherWords(const QString& address) const
    {
        const project::Expansion expansion = project::expandNamed(facts_.project, address);
        if (!expansion.ok || expansion.elements.size() != 1) {
            return std::nullopt;
        }
        return placeOfVariable(facts_.values.variables(), expansion.elements.front());
    }

    void explainUnpolled(const QString& address)
    {
        address_ = address;
        name_ = address;
        const project::Expansion expansion = project::expandNamed(facts_.project, address);
        if (!expansion.ok) {
            add({"resolved", "Address", false, expansion.problem, QString()});
            conclusion_ = "There is no such value: " + expansion.problem + ".";
            return;
        }
        if (expansion.elements.size() > 1) {
            add({"resolved", "Address", false,
                 QString("stands for %1 elements").arg(expansion.elements.size()), QString()});
            conclusion_ = "The address stands for several values: ask for one of them.";
            return;
        }
        add({"resolved", "Address", true, describe(expansion.elements.front()), QString()});
        add({"polled", "Polled", false, "not in the project's polled list", QString()});
        conclusion_ = "The value is not there because it is not polled: nobody asks for it.";
    }

    bool isAside() const { return facts_.setAside.count(*place_) > 0; }

    void addPolled()
    {
        if (isAside()) {
            add({"polled", "Polled", false,
                 QString("set aside: %1; it is tried again now and then")
                     .arg(facts_.setAside.at(*place_)),
                 QString()});
            return;
        }
        add({"polled", "Polled", true,
             QString("variable %1 of %2 in the polled list")
                 .arg(*place_ + 1)
                 .arg(facts_.values.variables().size()),
             QString()});
    }

    bool isSwitchedOff() const
    {
        return found_.last && found_.last->exchange.end == ExchangeEnd::suppressed;
    }

    void addStation(const PolledElement& variable)
    {
        add({"station", "Station", !isSwitchedOff(),
             QString(isSwitchedOff() ? "station %1 is switched off: nothing is sent to it"
                                     : "it is asked for at station %1")
                 .arg(variable.station),
             QString()});
    }

    void addValue(const PolledElement& variable)
    {
        const FoldedValue value = facts_.values.value(*place_);
        const size_t missing = facts_.values.missingParts(*place_);
        const size_t parts = facts_.values.parts(*place_);
        if (value.readAt) {
            const QString text =
                project::decodeValue(variable.element, variable.format, value.bytes);
            add({"value", "Value", true, project::printable(text), QString()});
        } else if (parts > 1 && missing < parts) {
            add({"value", "Value", false,
                 QString("%1 of its %2 words came: it is shown when all have")
                     .arg(parts - missing)
                     .arg(parts),
                 QString()});
        } else {
            add({"value", "Value", false, QString("%1: never read").arg(kNeverRead), QString()});
        }
    }

    void addAge()
    {
        const FoldedValue value = facts_.values.value(*place_);
        const QString age =
            value.readAt ? "read " + agoInWords(facts_, *value.readAt) : QString("never read");
        const QString quality =
            quality_.reason.isEmpty()
                ? QString(qualityWord(quality_.quality))
                : QString("%1: %2").arg(qualityWord(quality_.quality), quality_.reason);
        add({"age", "Age and quality", quality_.quality == Quality::good,
             QString("%1, %2").arg(age, quality), QString()});
    }

    QString conclude(const PolledElement& variable) const
    {
        const std::optional<Clock::time_point> readAt = facts_.values.readAt(*place_);
        WhyFacts why;
        why.quality = quality_;
        if (readAt) {
            why.age = facts_.now - *readAt;
        }
        why.request = request_.request;
        why.shares = request_.shares;
        why.isConnected = facts_.values.line().isConnected();
        why.wasConnected = facts_.values.line().wasConnected();
        why.line = facts_.values.line().words(facts_.now);
        why.station = variable.station;
        why.isSwitchedOff = isSwitchedOff();
        why.aside = isAside() ? facts_.setAside.at(*place_) : QString();
        why.parts = facts_.values.parts(*place_);
        why.missingParts = facts_.values.missingParts(*place_);
        why.wasAsked = found_.last.has_value() || !found_.isAll;
        if (quality_.quality == Quality::never) {
            why.failure = outOfSight(found_);
        }
        if (found_.last && !found_.last->exchange.isGood()) {
            why.failure = endInWords(found_.last->exchange, facts_.values.line().problem());
        }
        return conclusionOf(why);
    }

    const ExplainFacts& facts_;
    std::optional<size_t> place_;
    QString address_;
    QString name_;
    ValueQuality quality_;
    FoundExchanges found_;
    SharedRequest request_;
    std::vector<ExplainStep> steps_;
    QString conclusion_;
};

} // namespace

std::string explainJson(const QString& address, const ExplainFacts& facts)
{
    return Explanation(facts, address).json();
}

} // namespace tavmir::host
