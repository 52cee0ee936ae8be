// `explain`: what an address means, or how polling is cut into requests. Nothing is sent.
#include "commands.h"

#include "complain.h"
#include "driver/plan_frames.h"
#include "prepared_host.h"
#include "project/address_expansion.h"
#include "value_row.h"

#include <QtCore/QTextStream>

#include <cstdio>

namespace tavmir::host
{

namespace
{

constexpr int kMaxListedElements = 100;

QString typeName(const project::Element& element)
{
    switch (element.type) {
    case project::DataType::bit:
        return "bit";
    case project::DataType::word:
        return "word";
    case project::DataType::dword:
        return "dword";
    case project::DataType::real:
        return "real";
    case project::DataType::text:
        return QString("text of %1 words").arg(element.words);
    case project::DataType::structure:
        break;
    }
    return "structure";
}

QString describe(const project::Element& element)
{
    QString text = QString("%1: %2 (type %3) at bit address %4")
                       .arg(element.addressText, typeName(element))
                       .arg(element.typeCode())
                       .arg(element.address);
    if (element.bitNumber) {
        text += QString(", bit %1 of it").arg(*element.bitNumber);
    }
    if (element.isArrayElement) {
        text += QString(", array element, the driver cuts counts to %1").arg(element.elementLimit);
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

// True when the address can be used.
bool explainAddress(PreparedHost& host, const QString& address, QTextStream& out)
{
    const project::Resolution resolution = project::resolveAddress(host.project(), address);
    const project::Expansion expansion = project::expandAddress(host.project(), address);
    out << (address.isEmpty() ? QString("(empty)") : printable(address)) << '\n';
    out << "  driver's result " << resolution.driverCode << ": "
        << project::driverCodeInWords(resolution.driverCode) << '\n';
    if (!expansion.ok) {
        out << "  refused: " << printable(resolution.problem) << '\n';
        return false;
    }
    if (expansion.elements.size() > 1 || !resolution.ok) {
        out << "  stands for " << expansion.elements.size() << " elements\n";
    }
    bool agreed = true;
    int listed = 0;
    for (const project::Element& element : expansion.elements) {
        const QString disagreement = driverDisagrees(host.session().api(), element);
        agreed = agreed && disagreement.isEmpty();
        if (++listed <= kMaxListedElements || !disagreement.isEmpty()) {
            out << "  " << describe(element)
                << (disagreement.isEmpty() ? QString() : "; BUT " + disagreement) << '\n';
        }
    }
    if (listed > kMaxListedElements) {
        out << "  … and " << listed - kMaxListedElements << " more\n";
    }
    return agreed;
}

} // namespace

int explainCommand(const CommandLine& line)
{
    PreparedHost host(line);
    SessionOptions options;
    options.polls = line.arguments.isEmpty();
    if (!host.readProject() || !host.openSession(options)) {
        return kExitBadInput;
    }
    QTextStream out(stdout);
    if (line.arguments.isEmpty()) {
        const auto frames = planFrames(host.session().api(), host.session().polledElementsOnWire());
        out << describePlan(frames, host.session().polled()).join('\n') << '\n';
        return kExitOk;
    }
    QStringList refused;
    for (const QString& address : line.arguments) {
        if (!explainAddress(host, address, out)) {
            refused << "\"" + printable(address) + "\"";
        }
    }
    out.flush();
    if (refused.isEmpty()) {
        return kExitOk;
    }
    complain(QString("does not resolve: %1").arg(refused.join(", ")));
    return kExitBadInput;
}

} // namespace tavmir::host
