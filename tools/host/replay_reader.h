// What a recording says of one moment.
#ifndef TAVMIR_HOST_REPLAY_READER_H
#define TAVMIR_HOST_REPLAY_READER_H

#include "project/project_model.h"
#include "recorder/event_fold.h"
#include "recorder/recording_reader.h"

#include <map>
#include <memory>
#include <optional>

namespace tavmir::host
{

// The project that a file of the recording holds.
struct ReplayProject {
    QString name; // of its file
    project::Project project;
    QString problem; // not empty: it cannot be read, `project` holds nothing
};

struct ReplayMoment {
    recorder::Micros at = 0;
    recorder::TimeSpan coverage;
    bool isRecorded = false; // else what stands here is what was known last
    QString controller;
    std::shared_ptr<const ReplayProject> project; // never null
    std::vector<recorder::RecordedValueAt> values;
    std::vector<recorder::EventRow> events;    // the last ones until then
    recorder::EventFold past;                  // what those that were recorded before it say
    std::optional<recorder::MinuteRow> minute; // the one it lies in
    recorder::MinuteRow total;                 // of all minutes until then, that one included
};

// One thread.
class ReplayReader
{
public:
    static constexpr size_t kEvents = 500;

    // Null: `problem` says in one line why there is nothing to be shown.
    static std::unique_ptr<ReplayReader> open(const QString& folder, QString& problem);

    // As it is by now: the recording may go on, and its oldest files may go.
    recorder::TimeSpan coverage();
    ReplayMoment at(recorder::Micros at);

private:
    explicit ReplayReader(std::unique_ptr<recorder::RecordingReader> reader)
        : reader_(std::move(reader))
    {
    }
    void takeMinutes(recorder::TimeSpan span);
    recorder::EventFold pastOf(recorder::RecordingPart& part, recorder::Micros at);
    std::shared_ptr<const ReplayProject> projectOf(recorder::RecordingPart& part);
    void addMinutes(ReplayMoment& moment) const;

    std::unique_ptr<recorder::RecordingReader> reader_;
    recorder::TimeSpan coverage_;
    quint64 oldest_ = 0;                                 // file of the coverage
    std::map<quint64, recorder::EventFold> carriedInto_; // where the file of the number begins
    std::map<recorder::Micros, recorder::MinuteRow> minutes_;
    recorder::Micros projectOf_ = -1; // where the file of the project below begins
    QByteArray projectBytes_;
    std::shared_ptr<const ReplayProject> project_ = std::make_shared<ReplayProject>();
};

} // namespace tavmir::host

#endif
