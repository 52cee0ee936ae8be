// What a recording lets the page know of the past.
#ifndef TAVMIR_HOST_PAGE_RECORDING_H
#define TAVMIR_HOST_PAGE_RECORDING_H

#include "page/history_source.h"
#include "recorder/recording_reader.h"
#include "recorder/recording_state.h"

#include <memory>
#include <optional>
#include <string>

namespace tavmir::host
{

// Reads a folder, also while it is recorded into. One thread.
class PageRecording : public HistorySource
{
public:
    explicit PageRecording(const QString& folder) : folder_(folder) {}

    // Nothing where the folder cannot be read.
    HistoryPiece history(const QString& address, qint64 from, qint64 to, size_t points) override;

private:
    const QString folder_;
    std::unique_ptr<recorder::RecordingReader> reader_; // null: not opened yet, or it cannot be
};

// {"state","text","bytes","limit","from","to"}; "null": nothing is recorded.
std::string recordingStatus(const std::optional<recorder::RecordingState>& state);

} // namespace tavmir::host

#endif
