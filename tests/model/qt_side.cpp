#include "model/qt_side.h"

#include <cstring>

namespace tavmir::model
{

QString qtText(const Text& text)
{
    return QString::fromUtf16(reinterpret_cast<const ushort*>(text.data()),
                              static_cast<int>(text.size()));
}

Text modelText(const QString& text)
{
    Text result;
    result.reserve(static_cast<std::size_t>(text.size()));
    for (int i = 0; i < text.size(); ++i) {
        result += static_cast<char16_t>(text.at(i).unicode());
    }
    return result;
}

QByteArray qtBytes(const Bytes& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

Bytes modelBytes(const QByteArray& bytes)
{
    return Bytes(bytes.constBegin(), bytes.constEnd());
}

RW_VAR qtVar(const Var& var)
{
    RW_VAR result;
    result.hostKey = var.hostKey;
    result.varKey = var.varKey;
    result.hostData2 = var.hostData2;
    result.hostData3 = var.hostData3;
    result.hostData4 = var.hostData4;
    result.status = var.status;
    result.addressText = qtText(var.addressText);
    result.auxText = qtText(var.auxText);
    result.dataType = var.dataType;
    result.elementAddress = var.elementAddress;
    result.station = var.station;
    result.count = var.count;
    result.hostData12 = var.hostData12;
    result.hostData13 = var.hostData13;
    result.value = qtBytes(var.value);
    return result;
}

HOSTVAR qtPolled(const PolledVariable& variable)
{
    HOSTVAR result;
    result.hostByte0 = 0xA5;
    result.hostByte1 = 0x5A;
    result.hostByte3 = 0xC3;
    result.hostWord4 = -1;
    result.station = variable.station;
    result.auxText = qtText(variable.auxText);
    result.addressText = qtText(variable.addressText);
    result.count = variable.count;
    return result;
}

Label_Type_Info qtLabel(const Label& label)
{
    Label_Type_Info result;
    result.name = qtText(label.name);
    result.typeFlags = label.typeFlags;
    result.offset = label.offset;
    result.dimensionCount = label.dimensionCount;
    result.memberCount = label.memberCount;
    for (const std::int32_t bound : label.arrayBounds) {
        result.arrayBounds.append(bound);
    }
    for (const Label& member : label.members) {
        result.members.append(qtLabel(member));
    }
    for (const Label& type : label.elementType) {
        result.elementType.append(qtLabel(type));
    }
    result.extraText = qtText(label.extraText);
    for (const std::int32_t size : label.elementSizes) {
        result.elementSizes.append(size);
    }
    return result;
}

std::string shown(const Text& text)
{
    return '\'' + std::string(qtText(text).toUtf8().constData()) + '\'';
}

std::string shown(const Bytes& bytes)
{
    return std::to_string(bytes.size()) + " bytes " +
           std::string(qtBytes(bytes).toHex().constData());
}

std::string shown(const Event& event)
{
    if (event.kind == Event::Line) {
        return "line " + shown(event.line);
    }
    const char* const names[] = {"line", "varDoneCallback", "commFailCallback", "callback read"};
    std::string text = names[event.kind];
    for (const std::int32_t number : event.numbers) {
        text += ' ' + std::to_string(number);
    }
    return text + (event.kind == Event::CallbackRead ? ' ' + shown(event.bytes) : std::string());
}

} // namespace tavmir::model
