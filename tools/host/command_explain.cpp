// `explain`: what an address means, how polling is cut into requests, or what elements are called.
// Nothing is sent.
#include "commands.h"

#include "complain.h"
#include "driver/plan_frames.h"
#include "plan/label_tree.h"
#include "plan/overlaps.h"
#include "plan/wire_names.h"
#include "prepared_host.h"
#include "project/counted.h"
#include "project/raw_address.h"
#include "project/type_words.h"
#include "project/value_format.h"
#include "value_row.h"

#include <QtCore/QTextStream>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>

namespace tavmir::host
{

namespace
{

constexpr int kMaxListedElements = 100;
constexpr int kMaxListedSharing = 10;

// Of a bit in a word, that of the word.
QString typeOf(const project::Element& element)
{
    return element.bitNumber ? project::typeWord(element.type) : project::typeInWords(element);
}

QString describe(const project::Element& element)
{
    QString text = QString("%1: %2 (type %3) at bit address %4")
                       .arg(project::shownAddress(element), typeOf(element))
                       .arg(element.typeCode())
                       .arg(element.address);
    if (element.bitNumber) {
        text += QString(", bit %1 of it").arg(*element.bitNumber);
    }
    if (element.isArrayElement) {
        text += QString(", array element, the driver cuts counts to %1").arg(element.elementLimit);
    }
    if (element.type == project::DataType::text) {
        text += QString(", polled as %1, %2")
                    .arg(project::counted(static_cast<quint64>(element.words), "word", "words"),
                         pollAddress(element));
    }
    return text;
}

// The driver's own view of the address: empty when it agrees. Its one-shot list is used for
// that, which a driver whose cycle does not run never sends.
QString driverDisagrees(const DriverApi& api, const project::Element& element)
{
    RW_VAR variable;
    variable.addressText = element.addressText;
    variable.count = 1;
    if (api.addOnceRead(&variable) == 0) {
        return "the driver refuses it";
    }
    const qint32 address = variable.elementAddress - project::wireElementBits(element);
    if (variable.dataType != element.typeCode() ||
        address != static_cast<qint32>(element.address)) {
        return QString("the driver takes it for type %1 at %2").arg(variable.dataType).arg(address);
    }
    return QString();
}

QString described(const PreparedHost& host, const project::Element& element)
{
    const PolledIndex& polled = host.polled();
    return QString("%1, shown as %2")
        .arg(describe(element), project::formatName(polled.formatOf(element)));
}

// One line with the project's variables that share bits with the element; none when it has them
// for itself.
QString sharedWith(const project::Element& element, const std::vector<project::Element>& all)
{
    QStringList names;
    for (const project::Element& other : sharingBits(element, all)) {
        names << other.addressText;
    }
    if (names.isEmpty()) {
        return QString();
    }
    const int more = names.size() - kMaxListedSharing;
    QString text = "    shares bits with " + names.mid(0, kMaxListedSharing).join(", ");
    return more > 0 ? text + QString(" and %1 more").arg(more) : text;
}

// What the driver's parser says of the address text; one without a variable is none to it.
QString driverResult(const PreparedHost& host, const QString& address)
{
    if (project::isRawAddress(address)) {
        return QString();
    }
    const int code = project::resolveAddress(host.project(), address).driverCode;
    return QString("  driver's result %1: %2\n").arg(code).arg(project::driverCodeInWords(code));
}

// True when the address can be used.
//   all  elements of the project
bool explainAddress(PreparedHost& host, const std::vector<project::Element>& all,
                    const QString& address, QTextStream& out)
{
    const project::Resolution resolution = project::resolveNamed(host.project(), address);
    const project::Expansion expansion = project::expandNamed(host.project(), address);
    out << (address.isEmpty() ? QString("(empty)") : printable(address)) << '\n';
    out << driverResult(host, address);
    if (!expansion.ok) {
        out << "  refused: " << printable(resolution.problem) << '\n';
        return false;
    }
    if (expansion.elements.size() > 1 || !resolution.ok) {
        out << "  stands for " << project::counted(expansion.elements.size(), "element", "elements")
            << '\n';
    }
    bool agreed = true;
    int listed = 0;
    for (const project::Element& element : expansion.elements) {
        const QString disagreement = driverDisagrees(host.session().api(), element);
        agreed = agreed && disagreement.isEmpty();
        const bool isListed = ++listed <= kMaxListedElements;
        if (isListed || !disagreement.isEmpty()) {
            out << "  " << described(host, element)
                << (disagreement.isEmpty() ? QString() : "; BUT " + disagreement) << '\n';
        }
        const QString shared = isListed ? sharedWith(element, all) : QString();
        if (!shared.isEmpty()) {
            out << shared << '\n';
        }
    }
    if (listed > kMaxListedElements) {
        out << "  … and " << listed - kMaxListedElements << " more\n";
    }
    return agreed;
}

QString withMark(const project::Element& element, const std::set<WireElement>& polled)
{
    const std::vector<WireElement> parts = wireElements(element, 0);
    const bool isPolled = std::any_of(parts.begin(), parts.end(), [&](const WireElement& part) {
        return polled.count(part) != 0;
    });
    return element.addressText + (isPolled ? " (polled)" : "");
}

// One line for each two variables of the project that share bits.
QStringList overlapLines(PreparedHost& host)
{
    std::set<WireElement> polled;
    for (const PolledElement& entry : host.session().polled()) {
        for (const WireElement& part : wireElements(entry.element, 0)) {
            polled.insert(part);
        }
    }
    QStringList lines;
    const auto overlaps = findOverlaps(project::leafElements(host.project()));
    for (const Overlap& overlap : overlaps) {
        if (lines.size() == kMaxListedElements) {
            lines << "… and " +
                         project::counted(overlaps.size() - kMaxListedElements, "overlap",
                                          "overlaps") +
                         " more";
            break;
        }
        lines << QString("overlap: %1 and %2 share the bits %3 to %4")
                     .arg(withMark(overlap.first, polled), withMark(overlap.second, polled))
                     .arg(overlap.from)
                     .arg(overlap.to);
    }
    return lines;
}

void explainPlan(PreparedHost& host, QTextStream& out)
{
    const auto frames = planFrames(host.session().api(), host.session().polledElementsOnWire());
    const QStringList lines = describePlan(frames, host.session().polled()) + overlapLines(host);
    out << lines.join('\n') << '\n';
}

// Everything is on its way out; else says why not.
bool isPrinted(QTextStream& out)
{
    out.flush();
    if (out.status() == QTextStream::Ok && std::fflush(stdout) == 0) {
        return true;
    }
    complain(QString("standard output cannot be written: %1").arg(std::strerror(errno)));
    return false;
}

} // namespace

int explainCommand(const CommandLine& line)
{
    PreparedHost host(line);
    if (!host.readProject()) {
        return kExitBadInput;
    }
    QTextStream out(stdout);
    if (line.names) {
        out << wireNames(host.project(), host.polled()).join('\n') << '\n';
        return isPrinted(out) ? kExitOk : kExitFailed;
    }
    SessionOptions options;
    options.polls = line.arguments.isEmpty();
    if (!host.openSession(options)) {
        return kExitBadInput;
    }
    if (line.arguments.isEmpty()) {
        explainPlan(host, out);
        return isPrinted(out) ? kExitOk : kExitFailed;
    }
    const std::vector<project::Element> all = project::leafElements(host.project());
    QStringList refused;
    for (const QString& address : line.arguments) {
        if (!explainAddress(host, all, address, out)) {
            refused << "\"" + printable(address) + "\"";
        }
    }
    if (!isPrinted(out)) {
        return kExitFailed;
    }
    if (refused.isEmpty()) {
        return kExitOk;
    }
    complain(QString("does not resolve: %1").arg(refused.join(", ")));
    return kExitBadInput;
}

} // namespace tavmir::host
