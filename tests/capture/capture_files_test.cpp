// Files of a capture: what is replaced and what is not, the ring, and a disk that is full.
#include "capture/capture_files.h"

#include "read_capture.h"
#include "support/temporary_folder.h"
#include "support/wait_until.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <thread>

using namespace tavmir::capture;
using namespace tavmir::test;

namespace
{

constexpr std::uint64_t kMiB = 1 << 20;

class Files : public testing::Test
{
protected:
    CaptureOptions one() const
    {
        CaptureOptions options;
        options.file = folder.pathOf("line.pcapng");
        return options;
    }

    CaptureOptions ring(std::uint64_t limit, int count) const
    {
        CaptureOptions options = one();
        options.limitBytes = limit;
        options.files = count;
        return options;
    }

    std::string open(const CaptureOptions& options)
    {
        files.reset();
        files = std::make_unique<CaptureFiles>(
            options, Origin(), [this](const std::string& text) { told.push_back(text); });
        return files->open();
    }

    // A packet with a payload of so many bytes, and its number as time.
    void add(std::int64_t number, std::size_t size = 100)
    {
        TcpPayload payload(size);
        payload.packet.wallNs = number;
        PcapngWriter writer(*files);
        writer.take(payload.packet);
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    std::size_t sizeOf(const std::string& name) const
    {
        return static_cast<std::size_t>(std::filesystem::file_size(folder.pathOf(name)));
    }

    std::size_t allBytes() const
    {
        std::size_t total = 0;
        for (const std::string& name : names()) {
            total += sizeOf(name);
        }
        return total;
    }

    // The numbers of the packets in a file; it must be whole.
    std::vector<std::int64_t> numbersIn(const std::string& name) const
    {
        std::vector<std::int64_t> numbers;
        const Bytes bytes = fileBytes(folder.pathOf(name));
        const std::vector<ReadBlock> blocks = blocksOf(bytes);
        EXPECT_GE(blocks.size(), 2u) << name;
        EXPECT_EQ(0x0A0D0D0Au, blocks.at(0).type) << name;
        EXPECT_EQ(1u, blocks.at(1).type) << name;
        for (std::size_t i = 2; i < blocks.size(); ++i) {
            const Bytes& body = blocks[i].body;
            numbers.push_back(body.at(8) | body.at(9) << 8 | body.at(10) << 16);
        }
        return numbers;
    }

    struct TcpPayload {
        explicit TcpPayload(std::size_t size) : bytes(size, 'x')
        {
            packet.bytes = bytes.data();
            packet.size = bytes.size();
        }
        Bytes bytes;
        Packet packet;
    };

    TemporaryFolder folder;
    std::vector<std::string> told;
    std::unique_ptr<CaptureFiles> files;
};

// No file of this process may grow beyond so many bytes, as long as it lives.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_;
};

} // namespace

TEST_F(Files, AFileIsReadableFromTheBeginningOn)
{
    ASSERT_EQ("", open(one()));
    EXPECT_EQ(std::vector<std::string>{"line.pcapng"}, names());
    EXPECT_TRUE(numbersIn("line.pcapng").empty());
    add(1);
    add(2);
    files->flush();
    EXPECT_EQ((std::vector<std::int64_t>{1, 2}), numbersIn("line.pcapng"));
}

TEST_F(Files, WhatWasNotFlushedIsWrittenInTheEnd)
{
    ASSERT_EQ("", open(one()));
    add(1);
    files.reset();
    EXPECT_EQ(std::vector<std::int64_t>{1}, numbersIn("line.pcapng"));
}

TEST_F(Files, MuchIsNotGatheredForLong)
{
    ASSERT_EQ("", open(one()));
    for (int i = 0; i < 100; ++i) {
        add(i, 1000);
    }
    EXPECT_GT(numbersIn("line.pcapng").size(), 30u);
}

TEST_F(Files, AnOlderCaptureIsReplaced)
{
    ASSERT_EQ("", open(one()));
    add(1);
    add(2);
    ASSERT_EQ("", open(one()));
    add(3);
    files->flush();
    EXPECT_EQ(std::vector<std::int64_t>{3}, numbersIn("line.pcapng"));
}

TEST_F(Files, AFileThatIsNoCaptureIsLeftAsItIs)
{
    folder.writeFile("line.pcapng", "{ \"a project\": 1 }");
    EXPECT_EQ("cannot write a capture to " + one().file + ": is there and is no capture",
              open(one()));
    EXPECT_EQ(18u, sizeOf("line.pcapng"));
}

TEST_F(Files, AnEmptyFileIsTaken)
{
    folder.writeFile("line.pcapng", "");
    EXPECT_EQ("", open(one()));
}

TEST_F(Files, WhatCannotBeWrittenIsSaidAtOnce)
{
    CaptureOptions options = one();
    options.file = folder.pathOf("missing/line.pcapng");
    EXPECT_EQ("cannot write a capture to " + options.file + ": No such file or directory",
              open(options));
    options.limitBytes = kMiB;
    EXPECT_NE("", open(options)) << "as a ring";
    options = one();
    options.file = folder.path();
    EXPECT_NE("", open(options)) << "a folder";
}

TEST_F(Files, TwoProgramsDoNotWriteToOneFile)
{
    for (const CaptureOptions& options : {one(), ring(kMiB, 2)}) {
        ASSERT_EQ("", open(options));
        CaptureFiles second(options, Origin(), [](const std::string&) {});
        EXPECT_NE(std::string::npos, second.open().find("another program writes to it"));
    }
}

TEST_F(Files, ARingKeepsItsLimitAndTheLatest)
{
    ASSERT_EQ("", open(ring(kMiB, 4)));
    std::int64_t number = 0;
    for (; number < 3000; ++number) {
        add(number, 1000);
        if (number % 10 == 0) {
            files->flush();
            ASSERT_LE(allBytes(), kMiB);
        }
    }
    files.reset();
    EXPECT_LE(allBytes(), kMiB);
    EXPECT_GT(allBytes(), kMiB / 2);
    EXPECT_EQ(4u, names().size());
    std::vector<std::int64_t> kept;
    for (const std::string& name : names()) {
        EXPECT_LE(sizeOf(name), kMiB / 4);
        const std::vector<std::int64_t> numbers = numbersIn(name);
        kept.insert(kept.end(), numbers.begin(), numbers.end());
    }
    ASSERT_FALSE(kept.empty());
    EXPECT_EQ(number - 1, kept.back());
    for (std::size_t i = 1; i < kept.size(); ++i) {
        ASSERT_EQ(kept[i - 1] + 1, kept[i]) << "nothing between two files is missing";
    }
}

TEST_F(Files, TheFilesOfARingAreNumbered)
{
    ASSERT_EQ("", open(ring(kMiB, 2)));
    EXPECT_EQ(std::vector<std::string>{"line_00001.pcapng"}, names());
    for (int i = 0; i < 600; ++i) {
        add(i, 1000);
    }
    files.reset();
    EXPECT_EQ((std::vector<std::string>{"line_00001.pcapng", "line_00002.pcapng"}), names());
}

TEST_F(Files, ANameWithoutAnEndingTakesItsNumberBehind)
{
    CaptureOptions options = ring(kMiB, 2);
    options.file = folder.pathOf("line");
    ASSERT_EQ("", open(options));
    EXPECT_EQ(std::vector<std::string>{"line_00001"}, names());
}

TEST_F(Files, ARingGoesOnBehindTheFilesOfARunBefore)
{
    ASSERT_EQ("", open(ring(kMiB, 3)));
    add(1);
    ASSERT_EQ("", open(ring(kMiB, 3)));
    add(2);
    ASSERT_EQ("", open(ring(kMiB, 3)));
    add(3);
    files.reset();
    EXPECT_EQ(
        (std::vector<std::string>{"line_00001.pcapng", "line_00002.pcapng", "line_00003.pcapng"}),
        names());
    ASSERT_EQ("", open(ring(kMiB, 3)));
    EXPECT_EQ(
        (std::vector<std::string>{"line_00002.pcapng", "line_00003.pcapng", "line_00004.pcapng"}),
        names());
    EXPECT_EQ(std::vector<std::int64_t>{2}, numbersIn("line_00002.pcapng"));
}

TEST_F(Files, OtherFilesAreNotOfTheRing)
{
    const std::vector<std::string> others = {
        "line.pcapng",     "line_1.pcapng",      "line_00000.pcapng",  "line_0000a.pcapng",
        "line_00001.pcap", "xline_00001.pcapng", "line_000001.pcapng", "line_00001.pcapng.gz",
    };
    for (const std::string& name : others) {
        folder.writeFile(name, "not of the ring");
    }
    ASSERT_EQ("", open(ring(kMiB, 2)));
    for (int i = 0; i < 3000; ++i) {
        add(i, 1000);
    }
    files.reset();
    for (const std::string& name : others) {
        EXPECT_EQ(15u, sizeOf(name)) << name;
    }
}

TEST_F(Files, ARingHasRoomForItsPackets)
{
    EXPECT_EQ("", checkRing(ring(kMiB, 8)));
    EXPECT_NE("", checkRing(ring(kMiB, 9)));
    EXPECT_NE("", checkRing(ring(kMiB, 1)));
    EXPECT_EQ("", checkRing(ring(1000 * kMiB, 1000)));
    EXPECT_NE("", checkRing(ring(10000 * kMiB, 1001)));
}

TEST_F(Files, AFullDiskIsToldOnceAndTheFileStaysWhole)
{
    ASSERT_EQ("", open(one()));
    add(1);
    files->flush();
    {
        const FullDisk disk(sizeOf("line.pcapng") + 200);
        // Longer than it takes until it is tried again.
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1300);
        for (int i = 2; i < 10 || std::chrono::steady_clock::now() < end; ++i) {
            add(i);
            files->flush();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    ASSERT_EQ(1u, told.size());
    EXPECT_EQ("the capture cannot be written: " + one().file + ": File too large", told[0]);
    EXPECT_EQ((std::vector<std::int64_t>{1, 2}), numbersIn("line.pcapng"));
}

TEST_F(Files, WhenThereIsRoomAgainTheNextPacketSaysHowManyAreMissing)
{
    ASSERT_EQ("", open(one()));
    {
        const FullDisk disk(sizeOf("line.pcapng"));
        add(1);
        files->flush();
        add(2);
        files->flush();
    }
    ASSERT_TRUE(waitUntil([&] {
        add(3);
        files->flush();
        return told.size() == 2;
    }));
    EXPECT_EQ(0u, told[1].find("the capture is written again; "));
    files.reset();
    const std::vector<ReadBlock> blocks = blocksOf(fileBytes(one().file));
    ASSERT_EQ(3u, blocks.size());
    const std::string comment = optionsOf(blocks[2], 20 + 100)[1];
    EXPECT_NE(std::string::npos, comment.find("packets before this one could not be written"))
        << comment;
}
