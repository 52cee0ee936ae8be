#include "wire_names.h"

#include "project/address_expansion.h"
#include "project/value_format.h"

#include <map>

namespace tavmir::host
{

namespace
{

struct Named {
    QString name;
    project::Format format;
};

QString className(ElementClass elements)
{
    switch (elements) {
    case ElementClass::bits:
        return "bit";
    case ElementClass::words:
        return "word";
    case ElementClass::doubleWords:
        break;
    }
    return "dword";
}

using Names = std::map<WireElement, Named>;

void addText(const project::Element& text, Names& names)
{
    int distance = 0;
    for (const WireElement& word : wireElements(text, 0)) {
        const QString name =
            distance == 0 ? text.addressText : QString("%1+%2").arg(text.addressText).arg(distance);
        names.insert({word, {name, project::Format::unsignedNumber}});
        distance += project::wireElementBits(text);
    }
}

} // namespace

QStringList wireNames(const project::Project& project, const PolledIndex& polled)
{
    const std::vector<project::Element> variables = project::leafElements(project);
    Names names;
    for (const project::Element& variable : variables) {
        if (variable.type != project::DataType::text) {
            names[wireElements(variable, 0).front()] = {variable.addressText,
                                                        polled.formatOf(variable)};
        }
    }
    for (const project::Element& variable : variables) {
        if (variable.type == project::DataType::text) {
            addText(variable, names);
        }
    }
    QStringList lines;
    for (const auto& entry : names) {
        const quint32 address = static_cast<quint32>(entry.first.address);
        lines << QStringList{className(entry.first.elements), QString::number(address), "*",
                             project::formatName(entry.second.format), entry.second.name}
                     .join('\t');
    }
    return lines;
}

} // namespace tavmir::host
