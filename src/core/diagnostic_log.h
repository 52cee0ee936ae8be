// The driver's diagnostic lines. Private.
//
// Every line is one Qt debug message of type QtDebugMsg:
//
//   file " " "function" " " line level payload…
//
// with the debug stream's own blank after every item and its own quoting of strings.
#ifndef TAVMIR_CORE_DIAGNOSTIC_LOG_H
#define TAVMIR_CORE_DIAGNOSTIC_LOG_H

#include <QtCore/QByteArray>
#include <QtCore/QDebug>

namespace tavmir
{

// Line numbers are names, not places: readers of logs know them, so they stay what they are
// wherever the code moves.
enum DiagnosticLineNumber {
    // Communication_Protocol
    kLineContextConstructed = 46,
    kLineFailedRequest = 547,
    kLineFailedReply = 548,
    // Func_Init
    kLineRebuildStarted = 197,
    kLineRebuildOfNothing = 204,
    kLineRebuildAddressRefused = 234,
    kLineRebuildEntry = 357,
    // Func_Check
    kLineIndexRefused = 347,
    kLineMemberNotFound = 376,
    kLineStructureSizeMissing = 440,
    kLineAddressEmpty = 511,
    kLineAddressTooShort = 523,
    kLineLabelNotFound = 539,
    kLineLabelWithoutVariables = 547,
    // Func_Write
    kLineWriteTypeRefused = 67,
    kLineWriteFrame = 109,
    // Func_DealData
    kLineReplyTypeUnknown = 65,
    // Func_GetOrSetData
    kLineWordBitWrite = 362,
    kLineDoubleWordBitWrite = 412
};

extern const char kTrace[]; // "TRACE "
extern const char kInfo[];  // "INFO "
extern const char kError[]; // "ERROR "

// Begins a line; the caller streams the payload into the result, and the line goes out when
// the statement ends. Any thread. The rebuild writes some with `listMutex` held, reply decoding
// one with `cacheMutex`: hosts are told that a message handler must not call the driver.
QDebug diagnosticLine(const char* file, const char* function, DiagnosticLineNumber line,
                      const char* level);

// Writes lines that differ in their payload only, at a third of a stream's cost: what they begin
// with is composed once, and each goes out as one item. For the rebuild, which writes a line for
// each element. One thread at a time.
class RepeatedLine
{
public:
    RepeatedLine(const char* file, const char* function, DiagnosticLineNumber line,
                 const char* level);

    // payload  Latin-1, as the stream would write it, but without the last item's own blank
    void write(const char* payload);

private:
    QByteArray text_;
    int beginning_; // bytes of `text_` that stay
};

// Bytes as upper-case hexadecimal digits; null gives none.
QByteArray hexText(const QByteArray* bytes);

} // namespace tavmir

#endif
