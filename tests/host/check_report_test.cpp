// What a check has found as table, JSON and CSV.
#include "host/check_report.h"

#include "feed/made_exchange.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using project::DataType;

class ReportOfACheck : public testing::Test
{
protected:
    ReportOfACheck()
    {
        polled_ = {madeVariable(DataType::word, 16), madeVariable(DataType::word, 32),
                   madeVariable(DataType::text, 48, 2, 2)};
        polled_[2].name = "a, \"b\"";
        result_.variables.resize(3);
        result_.requests = 1;
        CheckedVariable& good = result_.variables[0];
        good.alone.end = CheckEnd::answered;
        good.alone.ms = 1.25;
        good.together.answer = good.alone;
        good.together.request = 1;
        good.together.sharing = 2;
        good.bytes = QByteArray("\x05\0", 2);
        CheckedVariable& refused = result_.variables[1];
        refused.alone.end = CheckEnd::refused;
        refused.alone.code = 2;
        refused.alone.ms = 3;
        refused.alone.why = "refused, code 2 (illegal data address)";
        refused.together = good.together;
        result_.variables[2].alone.why = "not asked: station 2 does not answer";
        result_.silentStations = {2};
    }

    CheckReport report() const
    {
        const Overlap overlap{polled_[0].element, polled_[1].element, 32, 47};
        return {polled_, result_, {overlap}};
    }

    std::vector<PolledElement> polled_;
    CheckResult result_;
};

QJsonObject objectOf(const QString& line)
{
    return QJsonDocument::fromJson(line.toUtf8()).object();
}

} // namespace

TEST_F(ReportOfACheck, IsGoodWhenAllAre)
{
    EXPECT_FALSE(isAllGood(report()));
    result_.variables[1] = result_.variables[2] = result_.variables[0];
    EXPECT_TRUE(isAllGood(report()));
    result_.variables[2].together.answer.end = CheckEnd::refused;
    EXPECT_FALSE(isAllGood(report()));
}

TEST_F(ReportOfACheck, AsTableNamesWhatAnsweredAndWhatDidNot)
{
    const QStringList lines = checkLines(report(), OutputFormat::table);
    ASSERT_EQ(4, lines.size());
    EXPECT_TRUE(lines[0].startsWith("NAME"));
    EXPECT_TRUE(lines[1].contains("M.at16")) << lines[1].toStdString();
    EXPECT_TRUE(lines[1].contains("  answered in 1.25 ms")) << lines[1].toStdString();
    EXPECT_TRUE(lines[1].contains("request 1 (2 elements): answered in 1.25 ms"))
        << lines[1].toStdString();
    EXPECT_TRUE(lines[1].endsWith("  5")) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].contains("refused, code 2 (illegal data address)"));
    EXPECT_TRUE(lines[2].endsWith("–"));
    EXPECT_TRUE(lines[3].contains("not asked: station 2 does not answer"));
    EXPECT_EQ(
        (QStringList{"3 variables in 1 request",
                     "alone: 1 answered, 1 refused, 0 no answer, 1 not asked",
                     "in their requests: 2 answered, 0 refused, 0 no answer, 1 not asked",
                     "station 2 never answered", "M.at16 and M.at32 share the bits 32 to 47"}),
        checkSummary(report(), OutputFormat::table));
}

TEST_F(ReportOfACheck, AsJsonIsAnObjectForEachAndOneForAll)
{
    const QStringList lines = checkLines(report(), OutputFormat::json);
    ASSERT_EQ(3, lines.size());
    const QJsonObject good = objectOf(lines[0]);
    EXPECT_EQ("M.at16", good["name"].toString().toStdString());
    EXPECT_EQ("M.at16", good["address"].toString().toStdString());
    EXPECT_EQ(1, good["station"].toInt());
    EXPECT_EQ("5", good["value"].toString().toStdString());
    EXPECT_EQ((QJsonObject{{"end", "answered"}, {"ms", 1.25}}), good["alone"].toObject());
    EXPECT_EQ((QJsonObject{{"end", "answered"}, {"ms", 1.25}, {"request", 1}, {"elements", 2}}),
              good["together"].toObject());
    const QJsonObject refused = objectOf(lines[1]);
    EXPECT_EQ(2, refused["alone"].toObject()["code"].toInt());
    EXPECT_EQ("refused, code 2 (illegal data address)",
              refused["alone"].toObject()["reason"].toString().toStdString());
    EXPECT_TRUE(refused["value"].isNull());
    EXPECT_EQ("not asked", objectOf(lines[2])["alone"].toObject()["end"].toString().toStdString());
    const QStringList summary = checkSummary(report(), OutputFormat::json);
    ASSERT_EQ(1, summary.size());
    const QJsonObject check = objectOf(summary[0])["check"].toObject();
    EXPECT_EQ(3, check["variables"].toInt());
    EXPECT_EQ(1, check["alone"].toObject()["refused"].toInt());
    EXPECT_EQ(2, check["together"].toObject()["answered"].toInt());
    EXPECT_EQ(QJsonArray{2}, check["silentStations"].toArray());
    EXPECT_EQ((QJsonArray{"M.at16", "M.at32"}), check["overlaps"].toArray()[0].toArray());
    EXPECT_FALSE(check["good"].toBool(true));
}

TEST_F(ReportOfACheck, AsCsvHasAHeadingAndQuotesCells)
{
    const QStringList lines = checkLines(report(), OutputFormat::csv);
    ASSERT_EQ(4, lines.size());
    EXPECT_EQ("name,address,station,alone,alone_code,alone_ms,request,elements,together,"
              "together_code,together_ms,value",
              lines[0].toStdString());
    EXPECT_EQ("M.at16,M.at16,1,answered,,1.250,1,2,answered,,1.250,5", lines[1].toStdString());
    EXPECT_EQ("M.at32,M.at32,1,refused,2,3.000,1,2,answered,,1.250,", lines[2].toStdString());
    EXPECT_EQ("\"a, \"\"b\"\"\",M.at48,2,not asked,,,0,0,not asked,,,", lines[3].toStdString());
}

} // namespace tavmir::host
