// A fold whose owner does not ask for changes knows the same values.
#include "feed/value_fold.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

TEST(FoldWithoutChanges, TextsAreWholeToo)
{
    ValueFold fold;
    fold.watch({madeVariable(project::DataType::text, 320, 1, 2)});
    fold.take(entryOf(madeRead(kReadWords, 1, {{320, 0x4241}, {336, 0x0043}}, momentAt(1))));
    EXPECT_EQ("ABC", std::string(fold.value(0).bytes.constData()));
    fold.take(entryOf(madeRead(kReadWords, 1, {{320, 0x4241}, {336, 0x0044}}, momentAt(2))));
    EXPECT_EQ("ABD", std::string(fold.value(0).bytes.constData()));
    EXPECT_EQ(momentAt(2), fold.value(0).readAt);
}

} // namespace tavmir::host
