// The page of text and the same as JSON.
#include "host/diagnose_report.h"
#include "host/statistics_report.h"
#include "made_capture.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>

#include <gtest/gtest.h>

using namespace tavmir;
using namespace tavmir::host;
using namespace tavmir::test;

namespace
{

diagnose::Diagnosis goodOne()
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.reply(2, words(0, {{100, 33}}));
    line.close(3, true);
    return diagnosisOf(capture);
}

diagnose::Diagnosis badOne()
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    for (int i = 0; i < 4; ++i) {
        line.request(500 * i + 1, readWords(2 * i, {100, 116}));
        line.reply(500 * i + 2, refused(2 * i, 102, 2));
        line.request(500 * i + 3, readWords(2 * i + 1, {100}));
        line.reply(500 * i + 4, words(2 * i + 1, {{100, 33}}));
    }
    line.request(3000, readWords(90, {900}, 7));
    line.request(3300, readWords(91, {100}));
    line.reply(3301, words(91, {{100, 33}}));
    return diagnosisOf(capture);
}

std::string page(const diagnose::Diagnosis& diagnosis)
{
    return diagnosisLines(diagnosis, "plant.pcapng").join('\n').toStdString();
}

} // namespace

TEST(DiagnoseReport, SaysThatAllIsWell)
{
    const std::string text = page(goodOne());
    EXPECT_EQ(0u, text.find("plant.pcapng: 6 packets, 6 of them TCP in 1 connection\n"
                            "from 2001-09-09T01:46:40.000Z to 2001-09-09T01:46:40.003Z, 0.0 s\n"
                            "\n"
                            "127.0.0.2 to controller 127.0.0.1:5020: all is well\n"))
        << text;
    EXPECT_NE(std::string::npos, text.find("\n  round trip median ms: 1\n")) << text;
    EXPECT_NE(std::string::npos, text.find("\n  pass ms: –\n")) << text;
}

TEST(DiagnoseReport, SaysWhatIsWrongSinceWhenAndWithWhat)
{
    const std::string text = page(badOne());
    for (const char* line :
         {": 1 request without a reply, 4 exceptions 2 (illegal data address)\n",
          "    exceptions 2 (illegal data address): 4, every 2nd request\n"
          "      the controller refused the request\n"
          "      since 2001-09-09T01:46:40.002Z, 0.0 s after the capture's beginning and 0 good "
          "replies; the last 1.8 s before its end\n"
          "      it was never answered, only refused\n"
          "      variables:\n"
          "        4 times word at 116 of station 1\n"
          "      requests:\n"
          "        4 times station 1 read words: 100, 116\n"
          "      the first:\n"
          "        2001-09-09T01:46:40.002Z #0 station 1 read words: 100, 116\n",
          "\n  station 7 never answered\n  never answered\n"
          "    word at 900 of station 7, asked for once"}) {
        EXPECT_NE(std::string::npos, text.find(line)) << line << "\nis not in\n" << text;
    }
}

TEST(DiagnoseReport, SaysOneInTheSingular)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.reply(2, words(0, {{100, 33}}));
    line.request(3, readWords(1, {116}));
    line.reply(4, refused(1, 102, 2));
    line.request(5, readWords(2, {132}));
    line.reply(6, words(2, {{132, 1}}).substr(0, 12));
    line.close(201, true);
    const std::string text = page(diagnosisOf(capture));
    for (const char* part :
         {": 1 exception 2 (illegal data address), 1 cut reply\n", " and 1 good reply; the last ",
          "\n        1 time station 1 read words: 116\n", "\n    cut replies: 1\n"}) {
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }
}

TEST(DiagnoseReport, SaysThatRefusedConnectionsAreCountedWhereTheyAre)
{
    MadeCapture capture;
    MadeConnection line(capture);
    line.connect(0);
    line.request(1, readWords(0, {100}));
    line.reply(2, words(0, {{100, 33}}));
    line.close(3, true);
    MadeConnection refused(capture, 40001);
    refused.ask(100);
    refused.refuse(100.2);
    const std::string text = page(diagnosisOf(capture));
    EXPECT_NE(std::string::npos, text.find(" in 2 TCP connections, refused ones too\n")) << text;
    EXPECT_NE(std::string::npos, text.find("\n  connections: 1\n")) << text;
}

TEST(DiagnoseReport, SaysThatAttemptsAreCounted)
{
    EXPECT_NE(
        std::string::npos,
        page(badOne()).find("    requests without a reply: 1\n      each attempt counts: it or "
                            "its reply was lost, or the controller is silent\n"));
}

TEST(DiagnoseReport, HasTheSameInJson)
{
    const diagnose::Diagnosis diagnosis = badOne();
    const QJsonObject object = diagnosisJson(diagnosis, "plant.pcapng");
    EXPECT_TRUE(object["wrong"].toBool());
    EXPECT_EQ("plant.pcapng", object["file"].toString().toStdString());
    const QJsonObject conversation = object["conversations"].toArray().at(0).toObject();
    EXPECT_EQ("127.0.0.1:5020", conversation["controller"].toString().toStdString());
    const diagnose::ConversationReport& report = diagnosis.conversations.at(0);
    for (const diagnose::Figure& figure : report.figures) {
        const QJsonValue value = conversation[statisticsKey(figure.label)];
        EXPECT_EQ(figure.isKnown, value.isDouble()) << figure.label;
        EXPECT_EQ(figure.isKnown ? figure.value : 0, value.toDouble()) << figure.label;
    }
    const QJsonArray findings = conversation["findings"].toArray();
    ASSERT_EQ(2, findings.size());
    const QJsonObject exceptions = findings.at(1).toObject();
    EXPECT_EQ("exceptions", exceptions["kind"].toString().toStdString());
    EXPECT_EQ(2, exceptions["code"].toInt());
    EXPECT_EQ(4, exceptions["times"].toInt());
    EXPECT_EQ("every 2nd request", exceptions["rhythm"].toString().toStdString());
    EXPECT_EQ("word at 116 of station 1",
              exceptions["variables"].toArray().at(0).toObject()["what"].toString().toStdString());
    EXPECT_EQ(7, conversation["silentStations"].toArray().at(0).toInt());
    EXPECT_TRUE(findings.at(0).toObject()["code"].isNull());
}

TEST(DiagnoseReport, HostileTextIsNotPrinted)
{
    diagnose::Diagnosis diagnosis = goodOne();
    diagnosis.conversations[0].notes.push_back("\x1b[2Jx");
    EXPECT_EQ(std::string::npos, page(diagnosis).find('\x1b'));
}

TEST(DiagnoseReport, EachKeyAndKindIsOnTheManualPage)
{
    QFile file(TAVMIR_HOST_MANUAL);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll());
    const auto expectDescribed = [&manual](const QString& key) {
        EXPECT_TRUE(manual.contains("*" + key + "*")) << key.toStdString();
    };
    const QJsonObject object = diagnosisJson(badOne(), "x");
    const QJsonObject conversation = object["conversations"].toArray().at(0).toObject();
    const QJsonObject finding = conversation["findings"].toArray().at(0).toObject();
    for (const QJsonObject& one : {object, conversation, finding}) {
        for (const QString& key : one.keys()) {
            expectDescribed(key);
        }
    }
    for (const diagnose::TroubleRow& row : diagnose::kTroubles) {
        expectDescribed(statisticsKey(row.label));
    }
}
