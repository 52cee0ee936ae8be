// Planned frames as objects.
#include "plan_json.h"

#include "json_writer.h"
#include "wire/frame_layout.h"

#include <set>

namespace tavmir::host
{

namespace
{

// "the next element has another data type"
QString whyItEnds(const PlannedFrame& frame)
{
    const QString ends = "ends because ";
    const QString words = endInWords(frame);
    return words.startsWith(ends) ? words.mid(ends.size()) : words;
}

void writeRequest(JsonWriter& json, const PlannedFrame& frame, const FrameWords& words,
                  const project::ElementNames& names)
{
    const wire::FunctionCode& function = *wire::findFunctionCode(frame.function);
    const auto nameOf = [&](const WireElement& element) {
        return names.nameOf(static_cast<quint32>(element.address), function.valueBits);
    };
    json.key("station").whole(frame.station);
    json.key("class").text(wire::elementsName(function.elements));
    json.key("function").text(function.words);
    json.key("elements").whole(static_cast<qint64>(frame.elements.size()));
    json.key("bytes").whole(frame.requestBytes);
    json.key("replyBytes").whole(frame.replyBytes);
    json.key("first").text(nameOf(frame.elements.front()));
    json.key("last").text(nameOf(frame.elements.back()));
    json.key("ends").text(whyItEnds(frame));
    json.key("variables").beginArray();
    for (const auto& user : words.variablesOf(frame)) {
        json.text(words.nameOf(user));
    }
    json.endArray();
}

} // namespace

std::vector<PolledElement> askedOf(const PolledGeneration& plan)
{
    std::set<size_t> aside;
    for (const SetAside& one : plan.setAside) {
        aside.insert(one.place);
    }
    std::vector<PolledElement> asked;
    for (size_t i = 0; i < plan.polled.size(); ++i) {
        if (aside.count(i) == 0) {
            asked.push_back(plan.polled[i]);
        }
    }
    return asked;
}

std::string planJson(quint64 generation, const std::vector<PolledElement>& asked,
                     const std::vector<PlannedFrame>& frames, const project::ElementNames& names)
{
    const FrameWords words(asked);
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("generation").whole(static_cast<qint64>(generation));
    json.key("requests").beginArray();
    for (size_t i = 0; i < frames.size(); ++i) {
        json.beginObject();
        json.key("number").whole(static_cast<qint64>(i + 1));
        json.key("of").whole(static_cast<qint64>(frames.size()));
        writeRequest(json, frames[i], words, names);
        json.endObject();
    }
    json.endArray().key("hints").beginArray();
    for (const QString& hint : planHints(frames)) {
        json.text(hint);
    }
    json.endArray();
    json.key("passElements").whole(static_cast<qint64>(words.elements()));
    json.endObject();
    return out;
}

} // namespace tavmir::host
