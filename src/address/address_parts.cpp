#include "address/address_parts.h"

namespace tavmir
{

namespace
{

// Collects the part that starts at `text` while its characters go by.
AddressPart emptyPart(const QChar* text)
{
    const AddressPart part = {{text, 0}, -1, -1};
    return part;
}

void takeCharacter(AddressPart& part, ushort character)
{
    if (character == '[') {
        part.open = part.whole.size;
    } else if (character == ']') {
        part.close = part.whole.size;
    }
    ++part.whole.size;
}

} // namespace

void splitAddress(const QString& address, AddressParts& parts)
{
    const QChar* const end = address.constData() + address.size();
    AddressPart part = emptyPart(address.constData());
    for (const QChar* at = address.constData(); at != end; ++at) {
        if (at->unicode() != '.') {
            takeCharacter(part, at->unicode());
            continue;
        }
        parts.append(part);
        part = emptyPart(at + 1);
    }
    parts.append(part);
}

void takeParts(const QStringList& texts, AddressParts& parts)
{
    for (QStringList::const_iterator text = texts.begin(); text != texts.end(); ++text) {
        AddressPart part = emptyPart(text->constData());
        for (int i = 0; i < text->size(); ++i) {
            takeCharacter(part, text->at(i).unicode());
        }
        parts.append(part);
    }
}

} // namespace tavmir
