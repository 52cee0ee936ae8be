// Facts as one object.
#include "recording_status.h"

#include "page/json_writer.h"
#include "project/counted.h"
#include "project/printable.h"
#include "recorder/state_words.h"

namespace tavmir::host
{

namespace
{

QString wordsOf(const recorder::RecordingState& state)
{
    if (!state.isOn()) {
        return QString("not recording since %1: %2")
            .arg(recorder::momentText(state.failedAt), state.problem);
    }
    QString words = "recording into " + project::printable(state.folder);
    if (state.lostSamples > 0) {
        words += ", " + project::counted(state.lostSamples, "sample", "samples") +
                 " could not be written";
    }
    if (state.missedEvents > 0) {
        words += ", " + project::counted(state.missedEvents, "event", "events") + " missed";
    }
    return words;
}

} // namespace

std::string recordingStatus(const std::optional<recorder::RecordingState>& state)
{
    if (!state) {
        return "null";
    }
    const auto moment = [](recorder::Micros at) {
        return at == 0 ? std::nullopt : std::optional<double>(static_cast<double>(at) / 1000);
    };
    std::string out;
    JsonWriter(out)
        .beginObject()
        .key("state")
        .text(state->isOn() ? "on" : "failed")
        .key("text")
        .text(wordsOf(*state))
        .key("bytes")
        .whole(static_cast<qint64>(state->bytes))
        .key("limit")
        .whole(static_cast<qint64>(state->limit))
        .key("from")
        .number(moment(state->from))
        .key("to")
        .number(moment(state->until))
        .endObject();
    return out;
}

} // namespace tavmir::host
