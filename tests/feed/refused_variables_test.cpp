// Which variables are refused, by what the feed tells.
#include "feed/refused_variables.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using project::DataType;
using Names = std::map<QString, QString>;

FeedEntry entryOf(FeedKind kind, const QString& variable, const QString& why = QString())
{
    FeedEntry entry = entryNow(kind, why);
    entry.variable = variable;
    return entry;
}

} // namespace

TEST(RefusedVariables, ComeAndGo)
{
    RefusedVariables refused;
    refused.take(entryOf(FeedKind::elementSetAside, "A.x", "refused, code 2"));
    refused.take(entryOf(FeedKind::elementSetAside, "A.y", "refused, code 3"));
    refused.take(entryOf(madeRead(kReadWords, 1, {{16, 1}}, momentAt(1))));
    EXPECT_EQ((Names{{"A.x", "refused, code 2"}, {"A.y", "refused, code 3"}}), refused.all());
    refused.take(entryOf(FeedKind::elementBack, "A.x"));
    EXPECT_EQ((Names{{"A.y", "refused, code 3"}}), refused.all());
}

TEST(RefusedVariables, APlanSaysWhichAreSetAside)
{
    RefusedVariables refused;
    refused.take(entryOf(FeedKind::elementSetAside, "A.x", "refused, code 2"));
    auto plan = std::make_shared<PolledGeneration>();
    plan->polled = {madeVariable(DataType::word, 16), madeVariable(DataType::word, 32)};
    plan->setAside = {{1, "refused, code 2"}};
    FeedEntry entry = entryNow(FeedKind::planChanged);
    entry.plan = plan;
    refused.take(entry);
    EXPECT_EQ((Names{{"M.at32", "refused, code 2"}}), refused.all());
}

} // namespace tavmir::host
