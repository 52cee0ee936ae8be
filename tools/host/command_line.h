// The command line of each command, as one record.
#ifndef TAVMIR_HOST_COMMAND_LINE_H
#define TAVMIR_HOST_COMMAND_LINE_H

#include "capture/capture_files.h"
#include "page_options.h"
#include "project/project_model.h"
#include "recorder/recorder.h"
#include "row_formats.h"

#include <QtCore/QStringList>

#include <optional>

namespace tavmir::host
{

// Where the trace goes, and what is in it.
struct TraceOptions {
    bool isOn = false;
    bool withBytes = false;
    QString file; // empty: standard error
};

struct CommandLine {
    QString projectFile;
    QStringList arguments; // addresses or assignments
    QString driverFile;    // empty: look for it
    bool driverLog = false;
    QString host; // empty: the project's
    int port = 0; // 0: the project's
    std::optional<int> station;
    OutputFormat output = OutputFormat::table;
    project::Format valueFormat = project::Format::automatic; // --as
    int timeoutMs = 0;   // of one read or write; 0: by the project's connection
    int durationMs = -1; // -1: until stopped
    int intervalMs = 500;
    std::optional<int> passMs; // --pass; none: the project's
    int staleAfterMs = QualityRules().staleAfterMs;
    bool everyChange = false; // --changes
    bool readBack = false;    // --read-back
    bool names = false;       // --names
    bool commandsFromInput = false;
    capture::CaptureOptions capture;  // its file empty: none is made
    TraceOptions trace;               // --trace
    recorder::RecorderOptions record; // --record; its folder empty: nothing is recorded
    PageOptions page;                 // --page, --open, --allow-writes
};

// Options that not every command has.
enum CommandOption : unsigned {
    kOutputOption = 1,     // --format
    kFormatOption = 2,     // --as
    kTimeoutOption = 8,    // --timeout
    kRunOptions = 4,       // --duration, --interval, --changes, --pass, --stale-after, --stdin
    kWriteOptions = 16,    // --read-back
    kNamesOption = 32,     // --names
    kTraceOption = 64,     // --trace
    kCaptureOptions = 128, // --capture, --capture-limit, --capture-files
    kRecordOptions = 256,  // --record, --record-limit, --record-every
    kPageOptions = 512     // --page, --open, --allow-writes
};

struct CommandDescription {
    const char* name;
    const char* arguments; // behind PROJECT, for --help
    const char* purpose;
    unsigned options;
    int minArguments;
    int maxArguments;
};

struct ParsedCommandLine {
    CommandLine line;
    QString problem; // not empty: refused
    QString help;    // not empty: to be shown instead
};

// arguments  the program's name, then what follows the command
ParsedCommandLine parseCommandLine(const CommandDescription& command, const QStringList& arguments);

} // namespace tavmir::host

#endif
