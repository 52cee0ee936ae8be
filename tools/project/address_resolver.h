// Resolves an address text of the project without the driver: to the same data type and bit
// address as the driver's parser gives for every address that the tools accept.
//
// The tools are stricter than the driver: they also refuse an index above its high bound, a
// bit number outside the word, an address that ends at a structure, and parts behind the end.
#ifndef TAVMIR_PROJECT_ADDRESS_RESOLVER_H
#define TAVMIR_PROJECT_ADDRESS_RESOLVER_H

#include "project_model.h"

namespace tavmir::project
{

// The data type with which a variable is registered with the driver. A real is a double word to it:
// the two share function codes and caches, but a request ends where the data type changes.
inline int driverType(DataType type)
{
    return static_cast<int>(type == DataType::real ? DataType::dword : type);
}

// One value: a bit, a word, a double word, a float, a text, or one bit of a word.
struct Element {
    QString addressText;
    DataType type = DataType::word;    // never structure
    quint32 address = 0;               // bits; the word's address also for one of its bits
    std::optional<int> bitNumber;      // set: one bit of the word or double word
    int words = 0;                     // text: its 16-bit words; otherwise 0
    Format format = Format::automatic; // as its variable is declared; of one bit of a word: ignored
    bool isArrayElement = false;
    bool isRaw = false;   // of no variable (raw_address.h)
    int elementLimit = 0; // array element: what the driver cuts counts to (high - low)

    // The data type under which the driver knows it.
    int typeCode() const { return driverType(type); }
    bool isBit() const { return type == DataType::bit || bitNumber.has_value(); }
};

// Elements that polling or reading one value takes: 1, for a text its words.
int wireElementCount(const Element& element);
// Bits from one such element to the next: 1, 16 or 32.
int wireElementBits(const Element& element);
// Bits of controller memory that the value covers: 1, 16, 32 or 16 per word of a text.
int memoryBits(const Element& element);
// The `count` that names the whole value to the driver's calls: for a 32-bit value 2, for a
// text its words, otherwise 1.
int driverCount(const Element& element);

struct Resolution {
    bool ok = false;
    Element element;    // valid when ok
    int driverCode = 0; // the driver's result code for this text (0: the driver takes it)
    QString problem;    // not ok: what is wrong, in words
};

// Result code of the driver in words ("resolved", "no such label", …).
QString driverCodeInWords(int code);

// `address` may be any text. Any thread; the project is only read.
Resolution resolveAddress(const Project& project, const QString& address);

} // namespace tavmir::project

#endif
