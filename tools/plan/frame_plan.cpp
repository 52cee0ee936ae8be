// Requests in words.
#include "frame_plan.h"

#include "label_tree.h"
#include "project/counted.h"
#include "wire/frame_layout.h"

namespace tavmir::host
{

namespace
{

ElementClass classOf(unsigned char function)
{
    const wire::FunctionCode* code = wire::findFunctionCode(function);
    return code != nullptr ? code->elements : ElementClass::words;
}

QString whyInWords(BatchEnd end)
{
    switch (end) {
    case BatchEnd::byteBudget:
        return "the byte budget of a request is used up";
    case BatchEnd::typeChange:
        return "the next element has another data type";
    case BatchEnd::endOfList:
        break;
    }
    return "the polled list is through";
}

// "38 words"
QString elementsInWords(const PlannedFrame& frame)
{
    const ElementClass elements = classOf(frame.function);
    return project::counted(frame.elements.size(), wire::elementName(elements),
                            wire::elementsName(elements));
}

QString passText(const std::vector<PlannedFrame>& frames)
{
    if (frames.empty() || frames.back().wrapped == 0) {
        return project::counted(frames.size(), "request", "requests") + " a pass";
    }
    return QString("%1 requests a pass on average").arg(requestsPerPass(frames), 0, 'f', 1);
}

QStringList textsOf(const std::vector<PolledElement>& polled)
{
    QStringList lines;
    for (const PolledElement& entry : polled) {
        if (entry.element.type == project::DataType::text) {
            lines << QString("text %1: polled as %2, %3")
                         .arg(entry.name,
                              project::counted(static_cast<quint64>(entry.element.words), "word",
                                               "words"),
                              pollAddress(entry.element));
        }
    }
    return lines;
}

} // namespace

FrameWords::FrameWords(const std::vector<PolledElement>& polled) : polled_(polled)
{
    for (size_t i = 0; i < polled.size(); ++i) {
        for (const WireElement& element : wireElements(polled[i].element, polled[i].station)) {
            users_[element].push_back(i);
        }
    }
}

std::vector<std::pair<size_t, int>> FrameWords::variablesOf(const PlannedFrame& frame) const
{
    std::vector<size_t> order;
    std::map<size_t, int> parts;
    for (const WireElement& element : frame.elements) {
        const auto found = users_.find(element);
        if (found == users_.end()) {
            continue;
        }
        for (const size_t user : found->second) {
            if (parts[user]++ == 0) {
                order.push_back(user);
            }
        }
    }
    std::vector<std::pair<size_t, int>> variables;
    for (const size_t user : order) {
        variables.emplace_back(user, parts[user]);
    }
    return variables;
}

QString FrameWords::nameOf(const std::pair<size_t, int>& user) const
{
    const PolledElement& variable = polled_[user.first];
    const int words = project::wireElementCount(variable.element);
    return words == 1
               ? variable.name
               : QString("%1 (%2 of %3 words)").arg(variable.name).arg(user.second).arg(words);
}

QString endInWords(const PlannedFrame& frame)
{
    if (frame.wrapped == 0) {
        return "ends because " + whyInWords(frame.end);
    }
    return QString("wraps around: %1 to the end of the polled list, then %2 from its head; "
                   "the next pass begins behind them")
        .arg(project::counted(frame.elements.size() - frame.wrapped, "element", "elements"))
        .arg(frame.wrapped);
}

// A request that ends at another data type though the next one has the same function code.
QStringList planHints(const std::vector<PlannedFrame>& frames)
{
    int early = 0;
    for (size_t i = 0; i + 1 < frames.size(); ++i) {
        const bool sameFunction = frames[i].function == frames[i + 1].function;
        early += frames[i].end == BatchEnd::typeChange && sameFunction ? 1 : 0;
    }
    if (early == 0) {
        return {};
    }
    return {
        QString("hint: %1 of %2 requests end early, because data types alternate that are asked "
                "for alike; with one data type their elements would share requests")
            .arg(early)
            .arg(frames.size())};
}

double requestsPerPass(const std::vector<PlannedFrame>& frames)
{
    const auto count = static_cast<double>(frames.size());
    if (frames.empty() || frames.back().wrapped == 0) {
        return count;
    }
    const PlannedFrame& last = frames.back();
    return count - static_cast<double>(last.wrapped) / static_cast<double>(last.elements.size());
}

bool PlannedFrame::isFull() const
{
    switch (classOf(function)) {
    case ElementClass::bits:
        return elements.size() >= 45;
    case ElementClass::words:
        return elements.size() >= 38;
    case ElementClass::doubleWords:
        break;
    }
    return elements.size() >= 28;
}

PlannedFrame plannedFrame(const Protocol& request)
{
    PlannedFrame frame;
    const auto* bytes = reinterpret_cast<const unsigned char*>(request.frame.constData());
    frame.station = bytes[wire::kStationOffset];
    frame.function = bytes[wire::kFunctionOffset];
    frame.requestBytes = request.frameLength;
    frame.replyBytes = request.replyLength;
    for (std::size_t i = 0; i < bytes[wire::kCountOffset]; ++i) {
        const unsigned char* entry = bytes + wire::kHeaderBytes + i * wire::kAddressBytes;
        frame.elements.push_back({classOf(frame.function),
                                  static_cast<qint32>(wire::bigEndian32(entry)),
                                  bytes[wire::kStationOffset]});
    }
    return frame;
}

QStringList describePlan(const std::vector<PlannedFrame>& frames,
                         const std::vector<PolledElement>& polled)
{
    const FrameWords words(polled);
    QStringList lines;
    lines << QString("%1, %2 on the wire, %3")
                 .arg(project::counted(polled.size(), "variable", "variables"),
                      project::counted(words.elements(), "element", "elements"), passText(frames));
    for (size_t i = 0; i < frames.size(); ++i) {
        const PlannedFrame& frame = frames[i];
        lines << QString("request %1: function '%2', %3 of station %4, %5 bytes out, %6 back")
                     .arg(i + 1)
                     .arg(QChar(frame.function))
                     .arg(elementsInWords(frame))
                     .arg(frame.station)
                     .arg(frame.requestBytes)
                     .arg(frame.replyBytes);
        QStringList names;
        for (const auto& user : words.variablesOf(frame)) {
            names << words.nameOf(user);
        }
        lines << "  variables: " + names.join(", ");
        lines << "  " + endInWords(frame);
    }
    return lines << textsOf(polled) << planHints(frames);
}

} // namespace tavmir::host
