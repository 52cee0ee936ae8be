// The files of a capture: one, or a ring of them within a limit.
//
//   plant.pcapng                    without a limit; an older capture of that name is replaced
//   plant_00001.pcapng, _00002 …    with a limit: when one is full the next begins, and the oldest
//                                   go. Those of runs before count too, and are not begun anew.
//
// Each file can be read by itself. Blocks are gathered and written together: only a kill during
// such a write can leave half of one, the last, which readers pass over. What cannot be written is
// counted and left out, said once, and tried again every second. One thread.
#ifndef TAVMIR_CAPTURE_CAPTURE_FILES_H
#define TAVMIR_CAPTURE_CAPTURE_FILES_H

#include "pcapng_writer.h"

#include "wire/deadline.h"

#include <functional>

namespace tavmir
{
namespace capture
{

struct CaptureOptions {
    static constexpr int kUsualFiles = 4;
    static constexpr int kMostFiles = 1000;

    std::string file;
    std::uint64_t limitBytes = 0; // of all files together; 0: none
    int files = kUsualFiles;      // with a limit: into so many it is divided, 2 or more
};

// Empty, or why a ring cannot be so.
std::string checkRing(const CaptureOptions& options);

class CaptureFiles : public BlockSink
{
public:
    // Told in one line what is wrong, and that it is right again.
    typedef std::function<void(const std::string& text)> Tell;

    CaptureFiles(const CaptureOptions& options, const Origin& origin, Tell tell);
    // Writes what is left.
    ~CaptureFiles() override;
    CaptureFiles(const CaptureFiles&) = delete;
    CaptureFiles& operator=(const CaptureFiles&) = delete;

    // Once, before everything else. Empty, or why it cannot be: no such folder, no right to write,
    // a file that is no capture, or one that another program writes to.
    std::string open();

    void write(const Bytes& block) override;
    std::uint64_t takeLost() override;

    // To be called within a fraction of a second after a block.
    void flush();

private:
    struct Member {
        std::string path;
        std::uint64_t number;
        std::uint64_t size;
    };

    bool isRing() const { return options_.limitBytes > 0; }
    std::uint64_t mostInAFile() const;
    std::string openOnly();
    std::string openNext();
    std::string openedFile(const std::string& path, int flags);
    std::string begin(const std::string& path);
    std::vector<Member> members() const;
    void removeOldest(const std::vector<Member>& members) const;
    bool writeWhole(const Bytes& bytes);
    void fail(const std::string& why);
    void succeed();
    void closeFile();

    CaptureOptions options_;
    Bytes header_;
    Tell tell_;
    std::string path_; // of the file that is open
    int descriptor_ = -1;
    std::uint64_t nextNumber_ = 1;
    std::uint64_t size_ = 0; // of whole blocks in the file
    Bytes waiting_;
    std::uint64_t blocksWaiting_ = 0;
    std::uint64_t lost_ = 0; // not told to the writer yet
    std::uint64_t lostInARow_ = 0;
    bool isFailing_ = false;
    wire::Clock::time_point nextTry_;
};

} // namespace capture
} // namespace tavmir

#endif
