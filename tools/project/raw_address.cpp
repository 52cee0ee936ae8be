// "@word:3016", and the driver's spelling of it.
#include "raw_address.h"

#include "json_object.h"

#include <QtCore/QStringList>

namespace tavmir::project
{

namespace
{

struct RawClass {
    const char* name;
    DataType type;
    qint64 bits;
    qint64 alignment;
};

constexpr RawClass kClasses[] = {
    {"bit", DataType::bit, 1, 1},
    {"word", DataType::word, 16, 8},
    {"dword", DataType::dword, 32, 8},
};
constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32;
// An index of the driver's has 31 bits: two arrays cover the addresses.
constexpr int kIndexBits = 31;

Expansion refuse(const QString& problem)
{
    Expansion refused;
    refused.problem = problem;
    return refused;
}

const RawClass* classNamed(const QString& name)
{
    for (const RawClass& known : kClasses) {
        if (name == known.name) {
            return &known;
        }
    }
    return nullptr;
}

const RawClass& classOf(DataType type)
{
    for (const RawClass& known : kClasses) {
        if (type == known.type) {
            return known;
        }
    }
    return kClasses[1];
}

QString variableName(const RawClass& rawClass, quint32 half)
{
    return QString("%1%2").arg(rawClass.name).arg(half);
}

// A decimal number without sign and blanks.
std::optional<qint64> wholeNumber(const QString& text)
{
    for (const QChar character : text) {
        if (character < '0' || character > '9') {
            return std::nullopt;
        }
    }
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    return isNumber ? std::optional<qint64>(number) : std::nullopt;
}

} // namespace

bool isRawAddress(const QString& text)
{
    return text.startsWith('@');
}

Expansion rawElements(const QString& text)
{
    const QStringList parts = text.mid(1).split(':');
    if (parts.size() < 2 || parts.size() > 3) {
        return refuse("without a variable an address is @bit:, @word: or @dword:, the bit address, "
                      "and where there are more : and how many, as in @word:3016:4");
    }
    const RawClass* rawClass = classNamed(parts.at(0));
    if (rawClass == nullptr) {
        return refuse(QString("no class %1: bit, word or dword").arg(quoted(parts.at(0))));
    }
    const std::optional<qint64> address = wholeNumber(parts.at(1));
    const qint64 last = kAddressSpace - rawClass->bits;
    if (!address || *address > last) {
        return refuse(QString("%1 is no bit address of a %2: 0 to %3")
                          .arg(quoted(parts.at(1)), rawClass->name)
                          .arg(last));
    }
    if (*address % rawClass->alignment != 0) {
        return refuse(QString("a %1 begins at a multiple of %2, such as %3, not at %4")
                          .arg(rawClass->name)
                          .arg(rawClass->alignment)
                          .arg(*address - *address % rawClass->alignment)
                          .arg(*address));
    }
    const std::optional<qint64> count = parts.size() == 3 ? wholeNumber(parts.at(2)) : 1;
    if (!count || *count < 1 || *count > kMostRawElements) {
        return refuse(
            QString("%1 is no count: 1 to %2").arg(quoted(parts.at(2))).arg(kMostRawElements));
    }
    if (*address + (*count - 1) * rawClass->bits > last) {
        return refuse(QString("%1 of them end beyond the last address 4294967295").arg(*count));
    }
    Expansion expansion;
    expansion.ok = true;
    for (qint64 i = 0; i < *count; ++i) {
        expansion.elements.push_back(
            rawElement(rawClass->type, static_cast<quint32>(*address + i * rawClass->bits)));
    }
    return expansion;
}

Expansion expandNamed(const Project& project, const QString& text)
{
    return isRawAddress(text) ? rawElements(text) : expandAddress(project, text);
}

Resolution resolveNamed(const Project& project, const QString& text)
{
    if (!isRawAddress(text)) {
        return resolveAddress(project, text);
    }
    const Expansion expansion = rawElements(text);
    Resolution resolution;
    resolution.problem = expansion.problem;
    resolution.ok = expansion.elements.size() == 1;
    if (resolution.ok) {
        resolution.element = expansion.elements.front();
    } else if (expansion.ok) {
        resolution.problem = QString("stands for %1 elements").arg(expansion.elements.size());
    }
    return resolution;
}

Element rawElement(DataType type, quint32 address)
{
    Element element;
    element.addressText = QString("%1.%2[%3].%4")
                              .arg(kRawLabel, variableName(classOf(type), address >> kIndexBits))
                              .arg(address & static_cast<quint32>(kMostRawIndex))
                              .arg(kRawMember);
    element.type = type;
    element.address = address;
    element.isRaw = true;
    return element;
}

QString shownAddress(const Element& element)
{
    return element.isRaw ? QString("@%1:%2").arg(classOf(element.type).name).arg(element.address)
                         : element.addressText;
}

std::vector<RawVariable> rawVariables()
{
    std::vector<RawVariable> variables;
    for (const RawClass& known : kClasses) {
        for (const quint32 half : {0u, 1u}) {
            variables.push_back({variableName(known, half), known.type, half << kIndexBits});
        }
    }
    return variables;
}

} // namespace tavmir::project
