// The recording's state in words and as JSON.
#include "recording_report.h"

#include "project/counted.h"
#include "recorder/state_words.h"

#include <QtCore/QJsonObject>

namespace tavmir::host
{

RecordingStrip recordingInStrip(const std::optional<recorder::RecordingState>& state)
{
    return state ? RecordingStrip{recorder::recordingWords(*state), !state->isOn()}
                 : RecordingStrip();
}

QStringList recordingLines(const std::optional<recorder::RecordingState>& state)
{
    if (!state) {
        return {};
    }
    QString line = "  " + recorder::recordingWords(*state);
    line +=
        QString("; %1 written into %2, from %3 to %4")
            .arg(project::counted(state->samples, "sample", "samples"), printable(state->folder),
                 recorder::momentText(state->from), recorder::momentText(state->until));
    return {line};
}

QJsonValue recordingJson(const std::optional<recorder::RecordingState>& state)
{
    if (!state) {
        return QJsonValue();
    }
    return QJsonObject{{"folder", state->folder},
                       {"problem", textOrNull(state->problem)},
                       {"bytes", static_cast<double>(state->bytes)},
                       {"limitBytes", static_cast<double>(state->limit)},
                       {"from", recorder::momentText(state->from)},
                       {"until", recorder::momentText(state->until)},
                       {"samples", static_cast<double>(state->samples)},
                       {"lostSamples", static_cast<double>(state->lostSamples)},
                       {"missedEvents", static_cast<double>(state->missedEvents)}};
}

} // namespace tavmir::host
