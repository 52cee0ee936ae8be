// POSIX files.
#include "recording_folder.h"

#include "schema.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace tavmir::recorder
{

namespace
{

constexpr char kPrefix[] = "recording-";
constexpr char kSuffix[] = ".sqlite";
constexpr char kLockName[] = "/recording.lock";
constexpr const char* kBeside[] = {"-wal", "-shm", "-journal"};
constexpr size_t kIdPlace = 68; // of the application's id in the head of a file
constexpr size_t kHeadBytes = 100;

QString systemError(const std::string& path, int error)
{
    return QString::fromLocal8Bit((path + ": " + std::strerror(error)).c_str());
}

std::string momentInName(Micros at)
{
    const auto seconds = static_cast<std::time_t>(at / kSecond);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    char text[80];
    std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02d%03dZ", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                  static_cast<int>(at / 1000 % 1000));
    return text;
}

std::string nameOf(quint64 number, Micros began)
{
    std::string digits = std::to_string(number);
    digits.insert(0, 8 - std::min<size_t>(8, digits.size()), '0');
    return kPrefix + digits + "-" + momentInName(began) + kSuffix;
}

// True when the name is the one of a file of a recording.
bool parseName(const std::string& name, Member& member)
{
    unsigned long long number = 0;
    std::tm parts = {};
    int ms = 0;
    const int found = std::sscanf(name.c_str(), "recording-%18llu-%4d%2d%2dT%2d%2d%2d%3dZ.sqlite",
                                  &number, &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                                  &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &ms);
    if (found != 8) {
        return false;
    }
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    member.number = number;
    member.began = static_cast<Micros>(timegm(&parts)) * kSecond + ms * 1000;
    return nameOf(member.number, member.began) == name;
}

bool isRecording(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (descriptor < 0) {
        return false;
    }
    unsigned char head[kHeadBytes] = {};
    const ssize_t size = ::pread(descriptor, head, sizeof head, 0);
    ::close(descriptor);
    std::uint32_t id = 0;
    for (size_t i = 0; i < 4; ++i) {
        id = id << 8 | head[kIdPlace + i];
    }
    return size == sizeof head && id == kApplicationId;
}

quint64 sizeOf(const std::string& path, bool& isThere)
{
    struct stat status = {};
    isThere = ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return isThere ? static_cast<quint64>(status.st_size) : 0;
}

} // namespace

std::vector<Member> membersOf(const std::string& folder)
{
    std::vector<Member> found;
    DIR* listing = ::opendir(folder.c_str());
    while (const dirent* entry = listing != nullptr ? ::readdir(listing) : nullptr) {
        Member member;
        bool isThere = false;
        member.path = folder + "/" + entry->d_name;
        if (!parseName(entry->d_name, member) || !isRecording(member.path)) {
            continue;
        }
        member.bytes = sizeOf(member.path, isThere);
        for (const char* beside : kBeside) {
            bool hasLog = false;
            member.bytes += sizeOf(member.path + beside, hasLog);
            member.hasLog = member.hasLog || hasLog;
        }
        if (isThere) {
            found.push_back(member);
        }
    }
    if (listing != nullptr) {
        ::closedir(listing);
    }
    std::sort(found.begin(), found.end(),
              [](const Member& left, const Member& right) { return left.number < right.number; });
    return found;
}

quint64 bytesOf(const std::vector<Member>& members)
{
    quint64 bytes = 0;
    for (const Member& member : members) {
        bytes += member.bytes;
    }
    return bytes;
}

bool isThere(const Member& member)
{
    return ::access(member.path.c_str(), F_OK) == 0;
}

void removeUnfinished(const std::string& folder)
{
    const std::string ending = kUnfinished;
    DIR* listing = ::opendir(folder.c_str());
    while (const dirent* entry = listing != nullptr ? ::readdir(listing) : nullptr) {
        const std::string name = entry->d_name;
        Member member;
        member.path = folder + "/" + name;
        const bool ends = name.size() > ending.size() &&
                          name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
        if (ends && parseName(name.substr(0, name.size() - ending.size()), member)) {
            removeMember(member);
        }
    }
    if (listing != nullptr) {
        ::closedir(listing);
    }
}

std::string memberPath(const std::string& folder, quint64 number, Micros began)
{
    return folder + "/" + nameOf(number, began);
}

void removeMember(const Member& member)
{
    ::unlink(member.path.c_str());
    for (const char* beside : kBeside) {
        ::unlink((member.path + beside).c_str());
    }
}

FolderLock::~FolderLock()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

QString FolderLock::take(const std::string& folder)
{
    if (::mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST) {
        return systemError(folder, errno);
    }
    const std::string path = folder + kLockName;
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (descriptor_ < 0) {
        return systemError(errno == ENOTDIR ? folder : path, errno);
    }
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        return QString::fromLocal8Bit(folder.c_str()) + ": another program records into it";
    }
    return QString();
}

} // namespace tavmir::recorder
