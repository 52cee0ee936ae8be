// POSIX files.
#include "capture_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tavmir
{
namespace capture
{

namespace
{

constexpr std::size_t kWrittenTogether = 65536;
// A file of a ring has room for its header and the longest packet.
constexpr std::uint64_t kLeastFileBytes = 131072;
constexpr std::size_t kNumberDigits = 5;
constexpr int kRetryMs = 1000;
constexpr unsigned char kCaptureBegins[] = {0x0A, 0x0D, 0x0D, 0x0A};

std::string systemError(const std::string& path, int error)
{
    return path + ": " + std::strerror(error);
}

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

std::string nameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

// Where the number of a file of a ring stands: in front of ".pcapng", or of whatever it ends with.
std::size_t numberPlace(const std::string& path)
{
    const std::size_t dot = path.rfind('.');
    const std::size_t name = path.size() - nameOf(path).size();
    return dot == std::string::npos || dot <= name ? path.size() : dot;
}

std::string numbered(const std::string& path, std::uint64_t number)
{
    std::string digits = std::to_string(number);
    digits.insert(0, kNumberDigits - std::min(kNumberDigits, digits.size()), '0');
    std::string result = path;
    return result.insert(numberPlace(path), "_" + digits);
}

// 0: not of the ring.
std::uint64_t numberIn(const std::string& name, const std::string& ringName)
{
    const std::size_t place = numberPlace(ringName);
    const std::size_t behind = ringName.size() - place;
    if (name.size() < place + 1 + kNumberDigits + behind || name[place] != '_') {
        return 0;
    }
    const std::string digits = name.substr(place + 1, name.size() - place - 1 - behind);
    const bool isNumber =
        digits.find_first_not_of("0123456789") == std::string::npos && digits.size() < 19; // fits
    const std::uint64_t number = isNumber ? std::strtoull(digits.c_str(), nullptr, 10) : 0;
    return number > 0 && numbered(ringName, number) == name ? number : 0;
}

} // namespace

constexpr int CaptureOptions::kUsualFiles;
constexpr int CaptureOptions::kMostFiles;

std::string checkRing(const CaptureOptions& options)
{
    if (options.files < 2 || options.files > CaptureOptions::kMostFiles) {
        return "a capture has 2 to " + std::to_string(CaptureOptions::kMostFiles) + " files";
    }
    const std::uint64_t inAFile = options.limitBytes / static_cast<std::uint64_t>(options.files);
    return inAFile >= kLeastFileBytes
               ? std::string()
               : "the limit is too small for so many files: each needs 128 KiB";
}

CaptureFiles::CaptureFiles(const CaptureOptions& options, const Origin& origin, Tell tell)
    : options_(options), tell_(std::move(tell))
{
    appendHeader(origin, header_);
}

CaptureFiles::~CaptureFiles()
{
    nextTry_ = wire::Clock::time_point();
    flush();
    closeFile();
}

std::string CaptureFiles::open()
{
    const std::string problem = isRing() ? openNext() : openOnly();
    return problem.empty() ? problem : "cannot write a capture to " + problem;
}

std::uint64_t CaptureFiles::mostInAFile() const
{
    return options_.limitBytes / static_cast<std::uint64_t>(options_.files);
}

// Nothing is lost before it is sure that the file is a capture which nobody writes to.
std::string CaptureFiles::openOnly()
{
    const std::string problem = openedFile(options_.file, O_RDWR | O_CREAT);
    if (!problem.empty()) {
        return problem;
    }
    struct stat status;
    unsigned char first[sizeof kCaptureBegins] = {};
    const bool isFile = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    const bool isEmpty = isFile && status.st_size == 0;
    const bool isCapture = isFile && ::pread(descriptor_, first, sizeof first, 0) == sizeof first &&
                           std::memcmp(first, kCaptureBegins, sizeof first) == 0;
    if (!isEmpty && !isCapture) {
        closeFile();
        return options_.file + ": is there and is no capture";
    }
    return begin(options_.file);
}

std::string CaptureFiles::openNext()
{
    const std::vector<Member> before = members();
    if (!before.empty() && descriptor_ < 0) {
        const std::string problem = openedFile(before.back().path, O_RDONLY);
        if (!problem.empty()) {
            return problem;
        }
    }
    closeFile();
    if (!before.empty()) {
        nextNumber_ = std::max(nextNumber_, before.back().number + 1);
    }
    removeOldest(before);
    const std::string path = numbered(options_.file, nextNumber_);
    const std::string problem = openedFile(path, O_RDWR | O_CREAT | O_EXCL);
    return problem.empty() ? begin(path) : problem;
}

// Opened, and locked as long as this program writes to it.
std::string CaptureFiles::openedFile(const std::string& path, int flags)
{
    // Not to wait for the reader of a pipe.
    descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0644);
    if (descriptor_ < 0) {
        return systemError(path, errno);
    }
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
        return std::string();
    }
    closeFile();
    return path + ": another program writes to it";
}

std::string CaptureFiles::begin(const std::string& path)
{
    path_ = path;
    size_ = 0;
    if (::ftruncate(descriptor_, 0) == 0 && writeWhole(header_)) {
        return std::string();
    }
    const std::string problem = systemError(path, errno);
    closeFile();
    return problem;
}

// Ascending by number.
std::vector<CaptureFiles::Member> CaptureFiles::members() const
{
    std::vector<Member> found;
    const std::string folder = folderOf(options_.file);
    const std::string prefix = folder == "." ? std::string() : folder;
    DIR* listing = ::opendir(folder.c_str());
    while (const dirent* entry = listing != nullptr ? ::readdir(listing) : nullptr) {
        Member member;
        member.path = prefix + entry->d_name;
        member.number = numberIn(entry->d_name, nameOf(options_.file));
        struct stat status;
        if (member.number == 0 || ::lstat(member.path.c_str(), &status) != 0 ||
            !S_ISREG(status.st_mode)) {
            continue;
        }
        member.size = static_cast<std::uint64_t>(status.st_size);
        found.push_back(member);
    }
    if (listing != nullptr) {
        ::closedir(listing);
    }
    std::sort(found.begin(), found.end(),
              [](const Member& left, const Member& right) { return left.number < right.number; });
    return found;
}

// Until there is room for a whole file more.
void CaptureFiles::removeOldest(const std::vector<Member>& members) const
{
    std::uint64_t total = mostInAFile();
    for (const Member& member : members) {
        total += member.size;
    }
    std::size_t left = members.size() + 1;
    for (const Member& member : members) {
        if (left <= static_cast<std::size_t>(options_.files) && total <= options_.limitBytes) {
            return;
        }
        ::unlink(member.path.c_str());
        total -= member.size;
        --left;
    }
}

void CaptureFiles::write(const Bytes& block)
{
    const std::uint64_t full = size_ + waiting_.size() + block.size();
    const bool hasPackets = size_ + waiting_.size() > header_.size();
    if (isRing() && full > mostInAFile() && hasPackets) {
        flush();
        if (!isFailing_) {
            const std::string problem = openNext();
            if (!problem.empty()) {
                fail(problem);
            }
        }
    }
    waiting_.insert(waiting_.end(), block.begin(), block.end());
    ++blocksWaiting_;
    if (waiting_.size() >= kWrittenTogether) {
        flush();
    }
}

std::uint64_t CaptureFiles::takeLost()
{
    const std::uint64_t lost = lost_;
    lost_ = 0;
    return lost;
}

void CaptureFiles::flush()
{
    if (waiting_.empty()) {
        return;
    }
    if (isFailing_ && wire::Clock::now() < nextTry_) {
        fail(std::string()); // known
        return;
    }
    if (descriptor_ < 0 && isRing()) {
        const std::string problem = openNext();
        if (!problem.empty()) {
            fail(problem);
            return;
        }
    }
    if (!writeWhole(waiting_)) {
        fail(systemError(path_, errno));
        return;
    }
    succeed();
    waiting_.clear();
    blocksWaiting_ = 0;
}

// All of it, or nothing: the file ends with a whole block whatever happens. False with errno.
bool CaptureFiles::writeWhole(const Bytes& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::pwrite(descriptor_, bytes.data() + done, bytes.size() - done,
                                         static_cast<off_t>(size_ + done));
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            const int error = written == 0 ? ENOSPC : errno;
            // Where it cannot be shortened, the next write goes over the half block.
            const int shortened = ::ftruncate(descriptor_, static_cast<off_t>(size_));
            static_cast<void>(shortened);
            errno = error;
            return false;
        }
    }
    size_ += bytes.size();
    return true;
}

// What waits is lost.
//   why  empty: told before
void CaptureFiles::fail(const std::string& why)
{
    lost_ += blocksWaiting_;
    lostInARow_ += blocksWaiting_;
    waiting_.clear();
    blocksWaiting_ = 0;
    if (why.empty()) {
        return;
    }
    nextTry_ = wire::Clock::now() + std::chrono::milliseconds(kRetryMs);
    if (!isFailing_) {
        isFailing_ = true;
        tell_("the capture cannot be written: " + why);
    }
}

void CaptureFiles::succeed()
{
    if (isFailing_) {
        isFailing_ = false;
        tell_("the capture is written again; " + std::to_string(lostInARow_) +
              " packets are missing");
        lostInARow_ = 0;
    }
}

void CaptureFiles::closeFile()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

} // namespace capture
} // namespace tavmir
