// What a project file says, as records: the connection, the labels and structure types, the
// polled variables, the initial values and the moving signals.
//
// The reader (project_reader.h) only hands out projects that are whole: every type name,
// address, format and value in them has been checked. `path` members say where in the file a
// record stood, for messages ("labels[0].variables[2]").
#ifndef TAVMIR_PROJECT_PROJECT_MODEL_H
#define TAVMIR_PROJECT_PROJECT_MODEL_H

#include <QtCore/QHash>
#include <QtCore/QString>

#include <optional>
#include <vector>

namespace tavmir::project
{

// The driver's data type codes.
enum class DataType : int { bit = 1, word = 4, dword = 6, real = 7, text = 10, structure = 12 };

// How a value is written and shown. `automatic` is a reader's choice by the data type: bit,
// number (signed, unsigned or 0x…), float, text.
enum class Format { automatic, bit, signedNumber, unsignedNumber, hex, floating, text };

struct Connection {
    QString host = "127.0.0.1";
    int port = 5020;
    int station = 1;          // default station, 0..255
    bool ownStations = false; // "stationMode": "own": a polled variable keeps its own station
    int connectTimeoutMs = 1000;
    int replyTimeoutMs = 500;
    int passMs = 100;               // from the beginning of one pass to the next; 0: at once
    int reconnectMinMs = 100;       // first pause after a lost connection
    int reconnectMaxMs = 5000;      // pauses grow up to this
    int retryLimit = 2;             // failures tolerated before a request is given up
    bool writesToController = true; // "writeMode": "controller"; false: caches only
};

struct IndexRange {
    int low = 0;
    int high = 0; // inclusive, above `low`
};

struct ArrayShape {
    int radix = 10; // in which indices are written in an address text, 2..36
    std::vector<IndexRange> bounds;
};

// A variable of a label or a member of a structure type.
struct Variable {
    QString name;
    DataType type = DataType::word;
    int structure = -1; // DataType::structure: index into Project::types
    quint32 offset = 0; // bits: a variable's address, or a member's distance from the start
    bool bitsAllowed = false;
    int words = 0;                     // DataType::text: 16-bit words
    Format format = Format::automatic; // how its values are meant; automatic: by the type
    std::optional<ArrayShape> array;
    QString path;
};

struct StructureType {
    QString name;
    quint32 size = 0; // bits; also the stride of an array of it
    std::vector<Variable> members;
    QString path;
};

struct Label {
    QString name;
    std::vector<Variable> variables;
    QString path;
};

// One polled entry. Its address may name a whole array or structure (address_expansion.h
// lists its elements).
struct Polled {
    QString address;
    QString name; // shown; the address when the file gives none
    Format format = Format::automatic;
    std::optional<int> station;
    int count = 1; // elements from an indexed address on
    QString path;
};

struct InitialValue {
    QString address;
    QString value; // as encodeValue takes it, Format::automatic
    QString path;
};

enum class SignalKind { constant, ramp, sine, square, counter, randomWalk };

// A value that moves by itself. `low`..`high` lies within the element's range.
struct Signal {
    QString address;
    SignalKind kind = SignalKind::constant;
    double low = 0;      // constant: the value
    double high = 0;     // reached or kept below; constant: the value
    int periodMs = 1000; // ramp, sine, square: one full period; counter, randomWalk: one step
    double step = 1;     // counter: added each step; randomWalk: largest change of a step
    quint32 seed = 1;    // randomWalk
    QString path;
};

struct Project {
    QString source; // file name, for messages
    Connection connection;
    std::vector<StructureType> types;
    std::vector<Label> labels;
    std::vector<Polled> polled;
    std::vector<InitialValue> initial;
    std::vector<Signal> movingSignals;

    QHash<QString, int> labelIndex;                    // by label name
    QHash<QString, QHash<QString, int>> variableIndex; // label name, variable name
};

} // namespace tavmir::project

#endif
