// Each trouble: told from the others, with the request that met it.
#include "made_capture.h"

#include "wire/frames.h"

#include <gtest/gtest.h>

using namespace tavmir;
using namespace tavmir::test;
using diagnose::Finding;
using diagnose::Trouble;

namespace
{

class Troubles : public testing::Test
{
protected:
    Troubles() : line(capture) { line.connect(0); }

    // A good exchange of 1 ms.
    void good(double ms, int transaction)
    {
        line.request(ms, readWords(transaction, {100, 116}));
        line.reply(ms + 1, words(transaction, {{100, 1}, {116, 2}}));
    }

    // Expects this trouble and no other, once.
    Finding only(Trouble trouble)
    {
        const auto diagnosis = diagnosisOf(capture);
        EXPECT_TRUE(diagnosis.isWrong() || rowOf(trouble).isRemark);
        const auto report = onlyOne(diagnosis);
        EXPECT_EQ(std::string(rowOf(trouble).label) + " 1", kindsOf(report));
        const Finding* finding = find(report, trouble);
        return finding != nullptr ? *finding : Finding();
    }

    static std::string firstOf(const Finding& finding)
    {
        return finding.occurrences.empty() ? std::string() : finding.occurrences.front();
    }

    // Behind the request.
    static std::string wordsOf(const std::string& occurrence)
    {
        return occurrence.substr(occurrence.rfind(": ") + 2);
    }

    MadeCapture capture;
    MadeConnection line;
};

} // namespace

TEST_F(Troubles, NothingIsWrongWithGoodExchanges)
{
    for (int i = 0; i < 20; ++i) {
        good(10 * i + 1, i);
    }
    line.close(300, true);
    const auto diagnosis = diagnosisOf(capture);
    EXPECT_FALSE(diagnosis.isWrong());
    EXPECT_EQ("", kindsOf(onlyOne(diagnosis)));
}

TEST_F(Troubles, ARequestWithoutAReply)
{
    good(1, 0);
    line.request(10, readWords(1, {100, 116}));
    good(210, 2);
    const Finding finding = only(Trouble::unanswered);
    EXPECT_EQ("2001-09-09T01:46:40.010Z #1 station 1 read words: 100, 116: nothing came for "
              "200.0 ms",
              firstOf(finding));
    EXPECT_EQ(1u, finding.goodBefore);
    EXPECT_EQ("station 1 read words: 100, 116", finding.requests.at(0).what);
}

TEST_F(Troubles, ARepetitionIsNoRequestOfItsOwn)
{
    line.request(1, readWords(1, {100, 116}));
    line.request(201, readWords(1, {100, 116}));
    line.reply(202, words(1, {{100, 1}, {116, 2}}));
    good(210, 2);
    EXPECT_EQ("nothing came for 200.0 ms", wordsOf(firstOf(only(Trouble::unanswered))));
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ(2, report.figures.at(2).value);
    EXPECT_EQ(3, report.figures.at(3).value);
}

TEST_F(Troubles, AReplyThatComesWhenTheHostAsksForSomethingElseIsLate)
{
    line.request(1, readWords(1, {100, 116}));
    line.request(201, readWords(2, {132}));
    line.reply(202, words(2, {{132, 1}}));
    line.reply(613.4, words(1, {{100, 1}, {116, 2}}));
    const Finding finding = only(Trouble::late);
    EXPECT_EQ("2001-09-09T01:46:40.613Z #1 station 1 read words: 100, 116: 612.4 ms after the "
              "request, for which the host waited 200.0 ms",
              firstOf(finding));
    EXPECT_EQ("a reply time-out of 620 ms would have caught them all; the host waits about "
              "200.0 ms",
              finding.advice);
}

TEST_F(Troubles, ALateReplyToTheFirstAttemptAnswersTheSecond)
{
    line.request(1, readWords(1, {100, 116}));
    line.request(201, readWords(1, {100, 116}));
    line.reply(301, words(1, {{100, 1}, {116, 2}}));
    good(310, 2);
    line.reply(501, words(1, {{100, 1}, {116, 2}}));
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("late replies 2", kindsOf(report));
    const Finding& late = *find(report, Trouble::late);
    EXPECT_EQ("300.0 ms after the request, for which the host waited 200.0 ms",
              wordsOf(firstOf(late)));
    EXPECT_EQ("300.0 ms after the request, when the host had taken the reply to an earlier attempt",
              wordsOf(late.occurrences.at(1)));
}

TEST_F(Troubles, ADuplicateBehindALostReplyIsNoLateOne)
{
    line.request(1, readWords(1, {100, 116}));
    line.request(201, readWords(1, {100, 116}));
    line.reply(201.2, words(1, {{100, 1}, {116, 2}}));
    line.reply(201.3, words(1, {{100, 1}, {116, 2}}));
    good(210, 2);
    EXPECT_EQ("requests without a reply 1, duplicate replies 1",
              kindsOf(onlyOne(diagnosisOf(capture))));
}

TEST_F(Troubles, ADuplicateReply)
{
    good(1, 0);
    line.reply(2.1, words(0, {{100, 1}, {116, 2}}));
    EXPECT_EQ("2001-09-09T01:46:40.002Z #0 station 1 read words: 100, 116: 0.10 ms behind the "
              "reply before it",
              firstOf(only(Trouble::duplicate)));
}

TEST_F(Troubles, ExceptionsAreToldByCode)
{
    line.request(1, readWords(0, {100, 116}));
    line.reply(2, refused(0, 102, 4));
    line.request(3, readWords(1, {100}));
    line.reply(4, refused(1, 102, 6));
    good(10, 2);
    const auto report = onlyOne(diagnosisOf(capture));
    ASSERT_EQ("exceptions 1, exceptions 1", kindsOf(report));
    EXPECT_EQ(4, report.findings[0].code);
    EXPECT_EQ(6, report.findings[1].code);
    EXPECT_TRUE(report.findings[0].variables.empty()); // both were answered at another time
}

TEST_F(Troubles, AnAddressThatIsOnlyRefusedIsToBlame)
{
    good(1, 0);
    line.request(10, readWords(1, {100, 132}));
    line.reply(11, refused(1, 102, 2));
    const Finding together = only(Trouble::exception);
    ASSERT_EQ(1u, together.variables.size());
    EXPECT_EQ("word at 132 of station 1", together.variables[0].what);
    EXPECT_EQ("it was never answered, only refused", together.advice);

    line.request(20, readWords(2, {132}));
    line.reply(21, refused(2, 102, 2));
    const auto report = onlyOne(diagnosisOf(capture));
    EXPECT_EQ("word at 132 of station 1, by itself, too",
              find(report, Trouble::exception)->variables.at(0).what);
}

TEST_F(Troubles, RepeatedExceptionsAreNoDuplicates)
{
    for (int i = 0; i < 3; ++i) {
        line.request(1 + i, readWords(0, {100}));
        line.reply(1.5 + i, refused(0, 102, 2));
    }
    good(10, 1);
    EXPECT_EQ("exceptions 3", kindsOf(onlyOne(diagnosisOf(capture))));
}

TEST_F(Troubles, AConnectionThatTheControllerClosesInsteadOfAReply)
{
    line.request(1, readWords(0, {100}));
    line.close(1.3, false);
    line.close(1.4, true);
    MadeConnection again(capture, 40001);
    again.connect(101.3);
    again.request(102, readWords(0, {100}));
    again.reply(103, words(0, {{100, 1}}));
    EXPECT_EQ("2001-09-09T01:46:40.001Z #0 station 1 read words: 100: the controller closed (FIN) "
              "0.30 ms after the request; connected again 100.0 ms later",
              firstOf(only(Trouble::lost)));
}

TEST_F(Troubles, AConnectionThatTheControllerClosesBetweenRequests)
{
    good(1, 0);
    line.reset(52, false);
    EXPECT_EQ("2001-09-09T01:46:40.052Z: the controller closed (RST) 50.0 ms after the last frame",
              firstOf(only(Trouble::closedIdle)));
}

TEST_F(Troubles, ACutReply)
{
    line.request(1, readWords(0, {100}));
    line.reply(2, words(0, {{100, 1}}).substr(0, 12));
    line.close(201, true);
    EXPECT_EQ("2001-09-09T01:46:40.002Z #0 station 1 read words: 100: 12 of 15 bytes",
              firstOf(only(Trouble::cut)));
}

TEST_F(Troubles, ACutReplyOnAConnectionThatGoesOn)
{
    line.request(1, readWords(0, {100}));
    line.reply(2, words(0, {{100, 1}}).substr(0, 12));
    good(201, 1);
    const Finding finding = only(Trouble::cut);
    EXPECT_EQ("2001-09-09T01:46:40.002Z #0 station 1 read words: 100: 12 of 15 bytes",
              firstOf(finding));
}

TEST_F(Troubles, BytesThatAreNoFrame)
{
    line.request(1, readWords(0, {100}));
    std::string damaged = words(0, {{100, 1}});
    damaged[2] = '\x80';
    line.reply(2, damaged);
    line.close(3, true);
    EXPECT_EQ("2001-09-09T01:46:40.002Z #0 station 1 read words: 100: protocol id 32768 instead "
              "of 0",
              firstOf(only(Trouble::noFrame)));
}

TEST_F(Troubles, AReplyOfWrongLength)
{
    line.request(1, readWords(0, {100, 116}));
    line.reply(2, frameOf(0, 1, 102, 2, std::string(11, '\0')));
    good(3, 1);
    EXPECT_EQ("20 bytes instead of 21", wordsOf(firstOf(only(Trouble::wrongLength))));
}

TEST_F(Troubles, AReplyThatEndsBehindItsFunction)
{
    line.request(1, readWords(0, {100, 116}));
    line.reply(2, fromHex("0000 0000 0002 01 66"));
    good(3, 1);
    EXPECT_EQ("8 bytes instead of 21", wordsOf(firstOf(only(Trouble::wrongLength))));
}

TEST_F(Troubles, AReplyOfWrongCount)
{
    line.request(1, readWords(0, {100, 116}));
    line.reply(2, words(0, {{100, 1}}));
    good(300, 1);
    EXPECT_EQ("1 element instead of 2", wordsOf(firstOf(only(Trouble::wrongCount))));
}

TEST_F(Troubles, AReplyWithOtherAddresses)
{
    line.request(1, readWords(0, {100, 116}));
    line.reply(2, words(0, {{100, 1}, {117, 2}}));
    good(300, 1);
    EXPECT_EQ("address 117 instead of 116", wordsOf(firstOf(only(Trouble::wrongAddresses))));
}

TEST_F(Troubles, AReplyOfAnotherFunctionStationOrTransaction)
{
    line.request(1, readWords(0, {100, 116}));
    line.reply(2, frameOf(0, 1, 108, 2, std::string(16, '\0')));
    line.request(301, readWords(1, {100, 116}));
    line.reply(302, words(1, {{100, 1}, {116, 2}}, 129));
    line.request(601, readWords(2, {100, 116}));
    line.reply(602, words(2 + 32768, {{100, 1}, {116, 2}}));
    good(900, 3);
    const auto report = onlyOne(diagnosisOf(capture));
    ASSERT_EQ("replies of another function 1, replies of another station 1, replies of another "
              "transaction 1",
              kindsOf(report));
    EXPECT_EQ("108 as function instead of 102", wordsOf(firstOf(report.findings[0])));
    EXPECT_EQ("129 as station instead of 1", wordsOf(firstOf(report.findings[1])));
    EXPECT_EQ("32770 instead of 2", wordsOf(firstOf(report.findings[2])));
}

TEST_F(Troubles, ATransactionDamagedToOneThatIsLongOver)
{
    for (int i = 0; i < 200; ++i) {
        good(10 * i + 1, i);
    }
    line.request(3000, readWords(200, {100, 116}));
    line.reply(3001, words(200 - 128, {{100, 1}, {116, 2}}));
    good(3300, 201);
    EXPECT_EQ("72 instead of 200", wordsOf(firstOf(only(Trouble::wrongTransaction))));
}

TEST_F(Troubles, AReplyThatNobodyAskedFor)
{
    good(1, 0);
    line.reply(5, words(9, {{200, 1}}));
    EXPECT_EQ("2001-09-09T01:46:40.005Z #9 station 1 read words", firstOf(only(Trouble::unasked)));
}

TEST_F(Troubles, ARequestThatIsNone)
{
    good(1, 0);
    line.request(10, frameOf(1, 1, 102, 2, std::string(4, '\0')));
    line.reply(11, refused(1, 102, 3));
    const auto report = onlyOne(diagnosisOf(capture));
    ASSERT_EQ("exceptions 1, requests that are none 1", kindsOf(report));
    EXPECT_NE(std::string::npos,
              firstOf(report.findings[1]).find("13 bytes instead of 17 for 2 elements"));
}

TEST_F(Troubles, RefusedAndUnansweredConnects)
{
    good(1, 0);
    line.close(5, true);
    MadeConnection refused(capture, 40001);
    refused.ask(100);
    refused.refuse(100.2);
    MadeConnection silent(capture, 40002);
    silent.ask(200);
    MadeConnection last(capture, 40003);
    last.connect(1500);
    last.request(1501, readWords(1, {100}));
    last.reply(1502, words(1, {{100, 1}}));
    const auto report = onlyOne(diagnosisOf(capture));
    ASSERT_EQ("refused connections 1, connects without an answer 1", kindsOf(report));
    EXPECT_EQ("2001-09-09T01:46:40.100Z: refused after 0.20 ms", firstOf(report.findings[0]));
    EXPECT_EQ("2001-09-09T01:46:40.200Z: no answer for 1.3 s", firstOf(report.findings[1]));
}

TEST(RefusedConnects, CountWhereAProjectExpectsAController)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.ask(0);
    line.refuse(1);
    EXPECT_TRUE(diagnosisOf(capture).conversations.empty());
    diagnose::DiagnosisSettings settings;
    settings.expectedPort = 5020;
    EXPECT_EQ("refused connections 1", kindsOf(onlyOne(diagnosisOf(capture, settings))));
    settings.expectedPort = 5021;
    EXPECT_TRUE(diagnosisOf(capture, settings).conversations.empty());
}

TEST_F(Troubles, OnlyControllersAtTheAskedPortAreJudged)
{
    good(1, 0);
    diagnose::DiagnosisSettings settings;
    settings.port = 5021;
    EXPECT_TRUE(diagnosisOf(capture, settings).conversations.empty());
    settings.port = 5020;
    EXPECT_EQ(1u, diagnosisOf(capture, settings).conversations.size());
}

TEST_F(Troubles, ARequestInFlightWhenTheCaptureEndsIsNotJudged)
{
    good(1, 0);
    line.request(10, readWords(1, {100, 116}));
    line.acknowledge(12, false);
    const auto diagnosis = diagnosisOf(capture);
    EXPECT_FALSE(diagnosis.isWrong());
    EXPECT_EQ(0u, onlyOne(diagnosis).notes.at(0).find("1 request had no reply yet"));
}

TEST_F(Troubles, ARequestThatWaitedForLongWhenTheHostEndsIsUnanswered)
{
    good(1, 0);
    line.request(10, readWords(1, {100, 116}));
    line.close(510, true);
    only(Trouble::unanswered);
}

TEST_F(Troubles, ASlowReplyIsARemark)
{
    for (int i = 0; i < 20; ++i) {
        good(10 * i + 1, i);
    }
    line.request(300, readWords(20, {100, 116}));
    line.reply(380, words(20, {{100, 1}, {116, 2}}));
    const Finding finding = only(Trouble::slow);
    EXPECT_EQ("answered after 80.0 ms", wordsOf(firstOf(finding)));
    EXPECT_EQ("the median is 1.00 ms", finding.advice);
    EXPECT_FALSE(diagnosisOf(capture).isWrong());
}

TEST_F(Troubles, AValueThatStandsOutInOneReplyIsARemark)
{
    for (int i = 0; i < 20; ++i) {
        line.request(10 * i + 1, readWords(i, {100, 116}));
        line.reply(10 * i + 2, words(i, {{100, i == 9 ? 700u : 33u}, {116, unsigned(i)}}));
    }
    const Finding finding = only(Trouble::standsOut);
    EXPECT_EQ(
        "2001-09-09T01:46:40.092Z #9 station 1 read words: 100, 116: word at 100 of station 1 "
        "was 700 instead of 33",
        firstOf(finding));
}

TEST_F(Troubles, AValueThatMovesDoesNotStandOut)
{
    for (int i = 0; i < 20; ++i) {
        const unsigned step = i < 10 ? 1 : 2;
        const unsigned blinking = unsigned(i % 2);
        const unsigned ramp = i == 9 ? 50 : unsigned(i / 4);
        line.request(10 * i + 1, readWords(i, {100, 116, 132}));
        line.reply(10 * i + 2, words(i, {{100, step}, {116, blinking}, {132, ramp}}));
    }
    EXPECT_EQ("", kindsOf(onlyOne(diagnosisOf(capture))));
}

TEST_F(Troubles, AValueReadOtherwiseThanWrittenIsARemark)
{
    line.request(1, writeWord(0, 100, 1234));
    line.reply(2, written(0));
    line.request(3, readWords(1, {100}));
    line.reply(4, words(1, {{100, 99}}));
    EXPECT_NE(std::string::npos, firstOf(only(Trouble::readOtherwise)).find("99 instead of 1234"));
}

TEST_F(Troubles, AValueReadAsWrittenIsFine)
{
    line.request(1, writeWord(0, 100, 1234));
    line.reply(2, written(0));
    line.request(3, readWords(1, {100}));
    line.reply(4, words(1, {{100, 1234}}));
    line.request(5, readWords(2, {100}));
    line.reply(6, words(2, {{100, 99}})); // the controller's own
    EXPECT_EQ("", kindsOf(onlyOne(diagnosisOf(capture))));
}

TEST_F(Troubles, WhatIsNeverAnsweredIsNamed)
{
    good(1, 0);
    line.request(10, readWords(1, {500}, 7));
    line.request(300, readWords(2, {516}));
    good(600, 3);
    const auto report = onlyOne(diagnosisOf(capture));
    ASSERT_EQ(2u, report.neverAnswered.size());
    EXPECT_EQ("word at 516 of station 1", report.neverAnswered[0].what);
    EXPECT_EQ("word at 500 of station 7", report.neverAnswered[1].what);
    EXPECT_EQ(std::vector<int>{7}, report.silentStations);
}

TEST_F(Troubles, APassIsTheTimeUntilTheSameElementIsReadAgain)
{
    // Three requests a pass, each beginning elsewhere.
    for (int i = 0; i < 12; ++i) {
        const unsigned from = 100 + 16 * unsigned(i % 3);
        line.request(30 * i + 1, readWords(i, {from}));
        line.reply(30 * i + 2, words(i, {{from, 1}}));
    }
    const auto report = onlyOne(diagnosisOf(capture));
    const auto value = [&](const std::string& label) {
        for (const diagnose::Figure& figure : report.figures) {
            if (label == figure.label) {
                return figure.value;
            }
        }
        return -1.0;
    };
    EXPECT_EQ(3, value("elements read again and again"));
    EXPECT_EQ(90, value("pass ms"));
}
