// Which files are the recording's, and who may write.
#include "recorder/recording_folder.h"

#include "made_recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

namespace tavmir::recorder
{

namespace
{

bool exists(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0;
}

} // namespace

TEST(RecordingFolder, NamesSayNumberAndTime)
{
    EXPECT_EQ(memberPath("f", 12, momentOf(123)),
              "f/recording-00000012-20260101T000000123Z.sqlite");
}

TEST(RecordingFolder, FilesAreInTheOrderOfTheirNumbers)
{
    MadeRecording made;
    made.addFile(10, momentOf(0), momentOf(1), Batch(), Batch());
    made.addFile(9, momentOf(5), momentOf(6), Batch(), Batch());
    made.addFile(123456789, momentOf(3), momentOf(4), Batch(), Batch());
    std::vector<quint64> numbers;
    for (const Member& member : membersOf(made.path())) {
        numbers.push_back(member.number);
        EXPECT_FALSE(member.hasLog);
        EXPECT_GT(member.bytes, 4096u);
    }
    EXPECT_THAT(numbers, testing::ElementsAre(9, 10, 123456789));
}

TEST(RecordingFolder, OtherFilesAreNoneOfIt)
{
    const test::TemporaryFolder folder;
    folder.writeFile("recording-00000001-20260101T000000000Z.sqlite", std::string(200, 'x'));
    folder.writeFile("recording-00000002-20260101T000000000Z.sqlite", "");
    folder.writeFile("recording-2-20260101T000000000Z.sqlite", "");
    folder.writeFile("recording-00000002-20261301T000000000Z.sqlite", "");
    folder.writeFile("other.sqlite", "");
    EXPECT_THAT(membersOf(folder.path()), testing::IsEmpty());
    EXPECT_THAT(membersOf(folder.pathOf("missing")), testing::IsEmpty());
}

TEST(RecordingFolder, ALogBesideAFileCounts)
{
    MadeRecording made;
    made.addFile(1, momentOf(0), momentOf(1), Batch(), Batch());
    const Member before = membersOf(made.path()).front();
    std::ofstream(before.path + "-wal") << std::string(1000, 'x');
    const Member after = membersOf(made.path()).front();
    EXPECT_TRUE(after.hasLog);
    EXPECT_EQ(after.bytes, before.bytes + 1000);
    removeMember(after);
    EXPECT_FALSE(exists(before.path + "-wal"));
    EXPECT_FALSE(exists(before.path));
}

TEST(RecordingFolder, WhatWasNeverBegunIsRemoved)
{
    const test::TemporaryFolder folder;
    const std::string half =
        folder.writeFile("recording-00000001-20260101T000000000Z.sqlite.new", "");
    const std::string other = folder.writeFile("other.new", "");
    removeUnfinished(folder.path());
    EXPECT_FALSE(exists(half));
    EXPECT_TRUE(exists(other));
}

TEST(RecordingFolder, OneProgramAtATimeRecords)
{
    const test::TemporaryFolder folder;
    FolderLock second;
    {
        FolderLock first;
        EXPECT_EQ(first.take(folder.path()), "");
        EXPECT_TRUE(second.take(folder.path()).endsWith("another program records into it"));
    }
    FolderLock third;
    EXPECT_EQ(third.take(folder.path()), "");
}

} // namespace tavmir::recorder
