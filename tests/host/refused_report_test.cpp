// Refused variables in the closing statistics.
#include "host/refused_report.h"

#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

RefusedVariables refusedOnes(const std::vector<QString>& names)
{
    RefusedVariables refused;
    for (const QString& name : names) {
        FeedEntry entry = entryNow(FeedKind::elementSetAside, "refused, code 2");
        entry.variable = name;
        refused.take(entry);
    }
    return refused;
}

} // namespace

TEST(RefusedReport, NamesEachBelowTheirNumber)
{
    EXPECT_EQ(QStringList(), refusedLines(refusedOnes({})));
    EXPECT_EQ((QStringList{"  refused variables: 2", "    A.x: refused, code 2",
                           "    A.y: refused, code 2"}),
              refusedLines(refusedOnes({"A.y", "A.x"})));
}

TEST(RefusedReport, AsJsonIsAList)
{
    EXPECT_TRUE(refusedJson(refusedOnes({})).isEmpty());
    const QJsonArray list = refusedJson(refusedOnes({"A.x"}));
    ASSERT_EQ(1, list.size());
    EXPECT_EQ((QJsonObject{{"name", "A.x"}, {"reason", "refused, code 2"}}), list[0].toObject());
}

} // namespace tavmir::host
