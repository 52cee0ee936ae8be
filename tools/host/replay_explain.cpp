// The steps that a recording knows of, and what they come to.
#include "feed/line_health.h"
#include "page/json_writer.h"
#include "page/value_rows.h"
#include "project/printable.h"
#include "project/raw_address.h"
#include "recorder/state_words.h"
#include "replay_words.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

using recorder::RecordedValueAt;

class ReplayExplanation
{
public:
    ReplayExplanation(const QString& address, const ReplayMoment& moment)
        : moment_(moment), line_(lineThen(moment)), address_(address), name_(address)
    {
        json_.beginArray();
        const auto found = std::find_if(
            moment.values.begin(), moment.values.end(),
            [&](const RecordedValueAt& value) { return value.variable.address == address; });
        if (found == moment.values.end()) {
            explainUnpolled();
        } else {
            explain(*found, static_cast<size_t>(found - moment.values.begin()));
        }
        json_.endArray();
    }

    std::string json() const
    {
        std::string out;
        JsonWriter json(out);
        json.beginObject().key("address").text(address_).key("name").text(name_);
        json.key("steps").raw(steps_).key("conclusion").text(conclusion_).endObject();
        return out;
    }

private:
    void add(const char* step, const char* title, std::optional<bool> ok, const QString& text)
    {
        json_.beginObject().key("step").text(step).key("title").text(title).key("ok");
        ok ? json_.boolean(*ok) : json_.null();
        json_.key("text").text(text).key("detail").null().endObject();
    }

    void explainUnpolled()
    {
        const project::Expansion expansion =
            project::expandNamed(moment_.project->project, address_);
        const bool isKnown = moment_.project->problem.isEmpty();
        if (!isKnown) {
            add("resolved", "Address", std::nullopt,
                "the recorded project cannot be read: " + moment_.project->problem);
        } else {
            add("resolved", "Address", expansion.ok,
                expansion.ok ? QString("known to the recorded project") : expansion.problem);
        }
        add("polled", "Polled", false, "not in the list that was polled at this moment");
        conclusion_ = isKnown && !expansion.ok
                          ? "There is no such value: " + expansion.problem + "."
                          : "At this moment the value was not there because it was not polled: "
                            "nobody asked for it.";
    }

    // Bit address and kind, where the project can still say it.
    QString describe(const recorder::RecordedVariable& variable) const
    {
        const QString kind = QString("a %1, shown as %2").arg(variable.type, variable.format);
        const project::Expansion expansion =
            project::expandNamed(moment_.project->project, address_);
        return expansion.ok && expansion.elements.size() == 1
                   ? QString("%1, at bit address %2")
                         .arg(kind)
                         .arg(expansion.elements.front().address)
                   : kind;
    }

    QString before(recorder::Micros at) const
    {
        return durationText(std::chrono::microseconds(moment_.at - at));
    }

    void explain(const RecordedValueAt& value, size_t place)
    {
        const recorder::Standing& standing = value.standing;
        const ValueQuality quality = qualityThen(standing, moment_.isRecorded);
        name_ = value.variable.name;
        add("resolved", "Address", true, describe(value.variable));
        addPolled(value, place, quality);
        add("station", "Station", std::nullopt,
            QString("it was asked for at station %1; a recording does not say whether the station "
                    "was switched off")
                .arg(value.variable.station));
        add("exchange", "Line", line_.isUp,
            line_.words + "; single requests are not recorded: they are in captures");
        addSample(value);
        add("age", "Quality", quality.quality == Quality::good,
            quality.reason.isEmpty()
                ? QString(qualityWord(quality.quality))
                : QString("%1: %2").arg(qualityWord(quality.quality), quality.reason));
        conclude(value, quality);
    }

    void addPolled(const RecordedValueAt& value, size_t place, const ValueQuality& quality)
    {
        const QString where =
            QString("variable %1 of %2").arg(place + 1).arg(moment_.values.size());
        const recorder::WhetherAside whether = moment_.past.isAside(value.variable.name);
        if (const recorder::AsidePast* aside = asideOf(value)) {
            add("polled", "Polled", false,
                QString("set aside %1: %2; it was tried again now and then")
                    .arg(sinceWords(aside->since, moment_.at), aside->why));
        } else if (whether == recorder::WhetherAside::no || quality.quality == Quality::good) {
            add("polled", "Polled", true, where + " in the list that was polled at this moment");
        } else {
            add("polled", "Polled", std::nullopt,
                where + " in the list of this moment; what is recorded does not say whether it "
                        "was set aside");
        }
    }

    // Null: it was not set aside, or nothing says it.
    const recorder::AsidePast* asideOf(const RecordedValueAt& value) const
    {
        const auto found = moment_.past.asides().find(value.variable.name);
        return found != moment_.past.asides().end() ? &found->second : nullptr;
    }

    void addSample(const RecordedValueAt& value)
    {
        if (value.standing.value.isNone()) {
            add("value", "Last sample", false, QString("%1: never read").arg(kNeverRead));
            return;
        }
        add("value", "Last sample", true,
            QString(
                "%1, recorded at %2, %3 before this moment; there is one at each change and one a "
                "minute, also of what was not read in between")
                .arg(textOf(value), recorder::momentText(value.standing.at),
                     before(value.standing.at)));
    }

    static QString textOf(const RecordedValueAt& value)
    {
        return project::printable(recorder::textOf(value.variable, value.standing.value));
    }

    void conclude(const RecordedValueAt& value, const ValueQuality& quality)
    {
        if (!moment_.isRecorded) {
            conclusion_ = "At this moment nothing was recorded: what stands here is what was known "
                          "last.";
            return;
        }
        if (quality.quality == Quality::good) {
            conclusion_ = QString("At this moment it was good: %1.").arg(textOf(value));
            return;
        }
        const QString what =
            quality.quality == Quality::never
                ? QString("At this moment there was no value yet")
                : QString("At this moment it was %1").arg(qualityWord(quality.quality));
        const recorder::AsidePast* aside = asideOf(value);
        if (aside != nullptr && quality.quality != Quality::unconfirmed && line_.isUp != false) {
            conclusion_ = QString("%1: the controller refused this address by itself (%2), so it "
                                  "was tried only now and then (so %3).")
                              .arg(what, aside->why, sinceWords(aside->since, moment_.at));
            return;
        }
        const ValueQuality& told = value.standing.quality;
        conclusion_ =
            told.reason.isEmpty()
                ? QString("%1: %2.").arg(what, quality.reason)
                : QString("%1 because %2 (so since %3).")
                      .arg(what, told.reason, recorder::momentText(value.standing.qualityAt));
        if (line_.isUp == false) {
            conclusion_.chop(1);
            conclusion_ += QString("; the line then: %1.").arg(line_.words);
        }
    }

    const ReplayMoment& moment_;
    const LineThen line_;
    const QString address_;
    QString name_;
    std::string steps_;
    JsonWriter json_{steps_};
    QString conclusion_;
};

} // namespace

std::string replayExplainJson(const QString& address, const ReplayMoment& moment)
{
    return ReplayExplanation(address, moment).json();
}

} // namespace tavmir::host
