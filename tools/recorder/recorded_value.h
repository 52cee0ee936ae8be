// A value as a recording keeps it: a whole number, a float or a text, and what it is a value of.
#ifndef TAVMIR_RECORDER_RECORDED_VALUE_H
#define TAVMIR_RECORDER_RECORDED_VALUE_H

#include "plan/polled_plan.h"

#include <optional>

namespace tavmir::recorder
{

// Microseconds since 1970, UTC.
using Micros = qint64;
constexpr Micros kMillisecond = 1000;
constexpr Micros kSecond = 1000000;
constexpr Micros kMinute = 60 * kSecond;

struct RecordedValue {
    enum class Kind { none, integer, real, text };

    Kind kind = Kind::none;
    qint64 integer = 0;
    double real = 0;
    QString text;

    static RecordedValue of(qint64 number);
    static RecordedValue of(double number); // one that is none is the text "nan"
    static RecordedValue of(const QString& text);

    bool isNone() const { return kind == Kind::none; }
    bool operator==(const RecordedValue& other) const;
    bool operator!=(const RecordedValue& other) const { return !(*this == other); }
};

// A polled variable as the recording knows it, by itself: without the project.
struct RecordedVariable {
    QString address; // as a user spells it
    QString name;
    QString type;   // "bit" (also one of a word's), "word", "dword", "real", "text"
    QString format; // "bit", "signed", "unsigned", "hex", "float", "text"
    int words = 0;  // of a text
    int station = 0;

    bool operator==(const RecordedVariable& other) const;
    bool isText() const { return type == "text"; }
};

RecordedVariable recordedVariable(const host::PolledElement& variable);

// The value in the format in which it is shown: a whole number for bits, signed, unsigned and hex.
//   bytes  as the driver's calls give them; empty: none
RecordedValue recordedValue(const host::PolledElement& variable, const QByteArray& bytes);

// The text that a user sees: "0x1F", "-5", "1.5". Null: there is no value.
QString textOf(const RecordedVariable& variable, const RecordedValue& value);

// The value as a number; none: a text, or nothing.
std::optional<double> numberOf(const RecordedValue& value);

} // namespace tavmir::recorder

#endif
