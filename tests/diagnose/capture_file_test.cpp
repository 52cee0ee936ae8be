// Files and link headers: whatever a capture was taken with, the same is read out of it.
#include "made_capture.h"

#include "support/temporary_folder.h"

#include <gtest/gtest.h>

using namespace tavmir;
using namespace tavmir::test;
using diagnose::Diagnosis;

namespace
{

void exchange(MadeCapture& capture, bool isSixth = false)
{
    MadeConnection line(capture, 40000, 5020, isSixth);
    line.connect(0);
    line.request(1, readWords(7, {100}));
    line.reply(2.25, words(7, {{100, 33}}));
    line.close(3, true);
}

void expectTheExchange(const Diagnosis& diagnosis)
{
    const auto report = onlyOne(diagnosis);
    EXPECT_EQ("", kindsOf(report));
    EXPECT_FALSE(diagnosis.isWrong());
    EXPECT_EQ("127.0.0.1:5020", report.controller);
    EXPECT_EQ("127.0.0.2", report.host);
    EXPECT_EQ("1.25 ms, 2001-09-09T01:46:40.001Z #7 station 1 read words: 100", report.slowest);
}

} // namespace

TEST(CaptureFile, IsPcapWithNanosecondsOrMicrosecondsOrPcapng)
{
    for (const FileKind kind : {FileKind::pcap, FileKind::pcapMicroseconds, FileKind::pcapng}) {
        MadeCapture capture(kRawIp, kind);
        exchange(capture);
        expectTheExchange(diagnosisOf(capture));
    }
}

TEST(CaptureFile, HasAnyOfTheLinkHeaders)
{
    for (const int link : {kEthernet, kNullLoopback, kRawIp, kCooked, kCooked2}) {
        MadeCapture capture(link);
        exchange(capture);
        SCOPED_TRACE(link);
        expectTheExchange(diagnosisOf(capture));
    }
}

TEST(CaptureFile, MayHaveVlanTags)
{
    for (const int link : {kEthernet, kCooked}) {
        MadeCapture capture(link);
        capture.tagVlan();
        exchange(capture);
        expectTheExchange(diagnosisOf(capture));
    }
}

TEST(CaptureFile, MayHoldTheSixthVersionOfIp)
{
    for (const int link : {kEthernet, kRawIp}) {
        MadeCapture capture(link);
        exchange(capture, true);
        const auto report = onlyOne(diagnosisOf(capture));
        EXPECT_EQ("[::1]:5020", report.controller);
        EXPECT_EQ("", kindsOf(report));
    }
}

TEST(CaptureFile, IsJudgedAsFarAsItGoesWhenItBreaksOff)
{
    for (const FileKind kind : {FileKind::pcap, FileKind::pcapng}) {
        MadeCapture capture(kRawIp, kind);
        exchange(capture);
        const std::string& bytes = capture.bytes();
        const Diagnosis diagnosis = diagnosisOf(bytes.substr(0, bytes.size() - 10));
        EXPECT_EQ(5u, diagnosis.packets);
        ASSERT_EQ(1u, diagnosis.notes.size());
        EXPECT_EQ(0u, diagnosis.notes[0].find("the file breaks off ("));
        EXPECT_FALSE(diagnosis.isWrong());
    }
}

TEST(CaptureFile, OfOtherTrafficHasNoFrameOfTheProtocol)
{
    MadeCapture capture;
    MadeConnection line(capture, 40000, 80);
    line.connect(0);
    line.request(1, "GET / HTTP/1.1\r\n\r\n");
    line.reply(2, "HTTP/1.1 200 OK\r\n\r\n");
    line.close(3, false);
    const Diagnosis diagnosis = diagnosisOf(capture);
    EXPECT_TRUE(diagnosis.conversations.empty());
    EXPECT_TRUE(diagnosis.isWrong());
    EXPECT_EQ("no frame of this protocol is in it; --port N judges the connections to port N all "
              "the same",
              diagnosis.notes.back());
    diagnose::DiagnosisSettings settings;
    settings.port = 81;
    EXPECT_EQ("no frame of this protocol is in it", diagnosisOf(capture, settings).notes.back());
}

TEST(CaptureFile, SaysWhyItCannotBeRead)
{
    std::string problem;
    EXPECT_EQ(nullptr, diagnose::CaptureReader::open("/none/such", problem));
    EXPECT_EQ("No such file or directory", problem);

    const TemporaryFolder folder;
    const std::string text = folder.writeFile("text", "this is no capture at all");
    EXPECT_EQ(nullptr, diagnose::CaptureReader::open(text, problem));
    EXPECT_NE(std::string::npos, problem.find("unknown file format")) << problem;

    const std::string radio = folder.writeFile("radio", MadeCapture(105).bytes());
    EXPECT_EQ(nullptr, diagnose::CaptureReader::open(radio, problem));
    EXPECT_EQ(0u, problem.find("its link type is 105 (IEEE802_11); ")) << problem;
}

TEST(CaptureFile, SaysThatItsPacketsAreNotWhole)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(7, {100}));
    line.reply(2, words(7, {{100, 33}}));
    line.keep(50);
    line.request(3, readWords(8, {100}));
    line.reply(4, words(8, {{100, 33}}));
    line.reset(5, true);
    const Diagnosis diagnosis = diagnosisOf(capture);
    const auto report = onlyOne(diagnosis);
    EXPECT_EQ("", kindsOf(report));
    EXPECT_EQ(0u, diagnosis.notes.at(0).find("2 packets are not whole in it"));
    EXPECT_EQ("8 bytes are missing in the capture; what they held is not judged",
              report.notes.at(0));
}

TEST(CaptureFile, MayHaveStampsThatGoBack)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(10, readWords(7, {100}));
    line.reply(4, words(7, {{100, 33}}));
    line.close(1e12, true); // thirty years on
    const Diagnosis diagnosis = diagnosisOf(capture);
    EXPECT_EQ("", kindsOf(onlyOne(diagnosis)));
    EXPECT_EQ(0u, onlyOne(diagnosis).slowest.find("0.00 ms, "));
    EXPECT_EQ(0u, diagnosis.notes.at(0).find("1 packets are stamped earlier"));
}
