// Requests in words.
#include "frame_plan.h"

#include "wire/frame_layout.h"

#include <map>

namespace tavmir::host
{

namespace
{

ElementClass classOf(unsigned char function)
{
    const wire::FunctionCode* code = wire::findFunctionCode(function);
    return code != nullptr ? code->elements : ElementClass::words;
}

QString endInWords(BatchEnd end)
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

// Variables in the order in which a frame meets them, and how many of their elements it holds.
QStringList variablesOf(const PlannedFrame& frame, const std::vector<PolledElement>& polled,
                        const std::map<WireElement, std::vector<size_t>>& users)
{
    std::vector<size_t> order;
    std::map<size_t, int> parts;
    for (const WireElement& element : frame.elements) {
        const auto found = users.find(element);
        if (found == users.end()) {
            continue;
        }
        for (const size_t user : found->second) {
            if (parts[user]++ == 0) {
                order.push_back(user);
            }
        }
    }
    QStringList names;
    for (const size_t user : order) {
        const int words = project::wireElementCount(polled[user].element);
        names << (words == 1 ? polled[user].name
                             : QString("%1 (%2 of %3 words)")
                                   .arg(polled[user].name)
                                   .arg(parts[user])
                                   .arg(words));
    }
    return names;
}

} // namespace

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
    std::map<WireElement, std::vector<size_t>> users;
    for (size_t i = 0; i < polled.size(); ++i) {
        for (const WireElement& element : wireElements(polled[i].element, polled[i].station)) {
            users[element].push_back(i);
        }
    }
    QStringList lines;
    lines << QString("%1 variables, %2 elements on the wire, %3 requests a pass")
                 .arg(polled.size())
                 .arg(users.size())
                 .arg(frames.size());
    for (size_t i = 0; i < frames.size(); ++i) {
        const PlannedFrame& frame = frames[i];
        lines << QString("request %1: function '%2', %3 %4 of station %5, %6 bytes out, %7 back")
                     .arg(i + 1)
                     .arg(QChar(frame.function))
                     .arg(frame.elements.size())
                     .arg(wire::elementsName(classOf(frame.function)))
                     .arg(frame.station)
                     .arg(frame.requestBytes)
                     .arg(frame.replyBytes);
        lines << "  variables: " + variablesOf(frame, polled, users).join(", ");
        lines << "  ends because " + endInWords(frame.end);
    }
    return lines;
}

} // namespace tavmir::host
