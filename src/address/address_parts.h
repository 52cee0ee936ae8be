// An address text cut at its dots, without copying it. Private.
#ifndef TAVMIR_ADDRESS_ADDRESS_PARTS_H
#define TAVMIR_ADDRESS_ADDRESS_PARTS_H

#include <QtCore/QStringList>
#include <QtCore/QVarLengthArray>

#include <cstring>

namespace tavmir
{

// Characters inside a text that outlives it.
struct TextPiece {
    const QChar* text;
    int size;

    QString toString() const { return QString(text, size); }
};

inline TextPiece pieceOf(const QString& text)
{
    const TextPiece piece = {text.constData(), text.size()};
    return piece;
}

inline bool operator==(const QString& a, const TextPiece& b)
{
    return a.size() == b.size && std::memcmp(a.constData(), b.text,
                                             static_cast<std::size_t>(b.size) * sizeof(QChar)) == 0;
}

// One part between dots, and where its brackets stand.
struct AddressPart {
    TextPiece whole;
    int open;  // position of the last '[', -1 without
    int close; // position of the last ']', -1 without
};

} // namespace tavmir

Q_DECLARE_TYPEINFO(tavmir::AddressPart, Q_PRIMITIVE_TYPE);

namespace tavmir
{

// Few addresses have more parts; those that do cost one allocation.
typedef QVarLengthArray<AddressPart, 8> AddressParts;

// Appends the parts of `address`, which must stay unchanged while they are used. Empty parts
// count: "A..B" has three.
void splitAddress(const QString& address, AddressParts& parts);

// The same for parts that are cut already; dots inside them do not count.
void takeParts(const QStringList& texts, AddressParts& parts);

} // namespace tavmir

#endif
