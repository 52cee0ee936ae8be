// The steps, each in words, and what they come to.
#include "explain_json.h"

#include "exchange_search.h"
#include "explain_conclusion.h"
#include "frames_json.h"
#include "json_writer.h"
#include "polled_place.h"
#include "project/printable.h"
#include "project/raw_address.h"
#include "project/type_words.h"
#include "project/value_format.h"
#include "value_rows.h"
#include "wire/frame_layout.h"

namespace tavmir::host
{

namespace
{

constexpr int kMostShared = 10;

struct Step {
    const char* step = "";
    QString title;
    std::optional<bool> ok; // none: nothing is known yet, or it cannot be said
    QString text;
    QString detail; // null: none
};

QString namesInWords(const QStringList& names)
{
    const int more = names.size() - kMostShared;
    const QString all = names.mid(0, kMostShared).join(", ");
    return more > 0 ? QString("%1 and %2 more").arg(all).arg(more) : all;
}

// "0.41 ms"
QString msText(Clock::duration duration)
{
    const double ms = std::chrono::duration<double, std::milli>(duration).count();
    return QString("%1 ms").arg(ms, 0, 'f', ms < 1 ? 3 : ms < 100 ? 1 : 0);
}

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
        addRequest(variable);
        addExchange();
        addBytes(variable);
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
        for (const Step& step : steps_) {
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
    void add(const Step& step) { steps_.push_back(step); }

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

    void addRequest(const PolledElement& variable)
    {
        const std::vector<WireElement> parts = wireElements(variable.element, variable.station);
        const FrameWords words(facts_.asked);
        for (size_t i = 0; i < facts_.frames.size(); ++i) {
            const PlannedFrame& frame = facts_.frames[i];
            const auto& held = frame.elements;
            if (std::find(held.begin(), held.end(), parts.front()) == held.end()) {
                continue;
            }
            request_ = QString("request %1 of %2").arg(i + 1).arg(facts_.frames.size());
            QStringList others;
            for (const auto& user : words.variablesOf(frame)) {
                if (facts_.asked[user.first].name != variable.name) {
                    others << words.nameOf(user);
                }
            }
            shares_ = others.size();
            add({"request", "Request", true,
                 QString("%1 of a pass, %2; %3")
                     .arg(request_,
                          others.isEmpty() ? QString("shared with nobody")
                                           : "shared with " + namesInWords(others),
                          endInWords(frame)),
                 QString()});
            return;
        }
        add({"request", "Request", false, "in no request of a pass", QString()});
    }

    QString ago(Clock::time_point moment) const
    {
        return durationText(facts_.now - moment) + " ago";
    }

    QString linkProblem() const { return facts_.values.line().problem(); }

    void addExchange()
    {
        const LineHealth& line = facts_.values.line();
        if (!found_.last) {
            add({"exchange", "Last exchange",
                 line.isConnected() ? std::optional<bool>() : std::optional<bool>(false),
                 line.isConnected() ? QString("not asked for yet: its turn will come")
                                    : "nothing is sent: " + line.words(facts_.now),
                 QString()});
            return;
        }
        const Exchange& exchange = found_.last->exchange;
        const QString took = msText(exchange.endedAt - exchange.sentAt);
        QString text =
            exchange.isGood()
                ? QString("answered %1, after %2").arg(ago(exchange.endedAt), took)
                : QString("%1, %2").arg(endInWords(exchange, linkProblem()), ago(exchange.endedAt));
        if (exchange.attempt > 1) {
            text += QString(", attempt %1").arg(exchange.attempt);
        }
        QString detail = "> " + bytesInWords(exchange.request, exchange.requestKept());
        if (exchange.answered()) {
            detail += "\n< " + bytesInWords(exchange.reply, exchange.replyKept());
        }
        add({"exchange", "Last exchange", exchange.isGood(), text, detail});
    }

    void addBytes(const PolledElement& variable)
    {
        const std::optional<size_t> at =
            found_.lastGood ? offsetInReply(found_.lastGood->exchange, *found_.element)
                            : std::nullopt;
        if (!at) {
            add({"bytes", "Bytes", std::nullopt, "no reply that is still kept brought any",
                 QString()});
            return;
        }
        const Exchange& exchange = found_.lastGood->exchange;
        const size_t size =
            wire::findFunctionCode(exchange.request[wire::kFunctionOffset])->valueBytes;
        const unsigned char* value = exchange.reply + *at + wire::kAddressBytes;
        const bool isPart = facts_.values.parts(*place_) > 1;
        add({"bytes", "Bytes", true,
             QString("bytes %1 to %2 of the reply %3: %4%5")
                 .arg(*at + wire::kAddressBytes + 1)
                 .arg(*at + wire::kAddressBytes + size)
                 .arg(ago(exchange.endedAt), bytesInWords(value, size),
                      isPart ? QString(", one of its %1 words").arg(variable.element.words)
                             : QString()),
             "< " + bytesInWords(exchange.reply, exchange.replyKept())});
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
        const QString age = value.readAt ? "read " + ago(*value.readAt) : QString("never read");
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
        why.request = request_;
        why.shares = shares_;
        why.isConnected = facts_.values.line().isConnected();
        why.wasConnected = facts_.values.line().wasConnected();
        why.line = facts_.values.line().words(facts_.now);
        why.station = variable.station;
        why.isSwitchedOff = isSwitchedOff();
        why.aside = isAside() ? facts_.setAside.at(*place_) : QString();
        why.parts = facts_.values.parts(*place_);
        why.missingParts = facts_.values.missingParts(*place_);
        why.wasAsked = found_.last.has_value();
        if (found_.last && !found_.last->exchange.isGood()) {
            why.failure = endInWords(found_.last->exchange, linkProblem());
        }
        return conclusionOf(why);
    }

    const ExplainFacts& facts_;
    std::optional<size_t> place_;
    QString address_;
    QString name_;
    ValueQuality quality_;
    FoundExchanges found_;
    QString request_; // "request 2 of 3"; empty: in none
    int shares_ = 0;
    std::vector<Step> steps_;
    QString conclusion_;
};

} // namespace

std::string explainJson(const QString& address, const ExplainFacts& facts)
{
    return Explanation(facts, address).json();
}

} // namespace tavmir::host
