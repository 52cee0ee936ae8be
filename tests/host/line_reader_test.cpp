// Lines from a descriptor.
#include "host/line_reader.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>

namespace tavmir::host
{

TEST(Lines, ComeOneByOneUntilTheEnd)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ASSERT_EQ(8, ::write(ends[1], "ab\n\ncd\ne", 8));
    ::close(ends[1]);
    LineReader reader(ends[0]);
    EXPECT_EQ("ab", reader.next().value());
    EXPECT_EQ("", reader.next().value());
    EXPECT_EQ("cd", reader.next().value());
    EXPECT_EQ("e", reader.next().value());
    EXPECT_FALSE(reader.next().has_value());
    ::close(ends[0]);
}

TEST(Lines, LongLinesComeInPieces)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    std::thread writer([&] {
        const QByteArray bytes(LineReader::kMaxLineBytes + 10000, 'x');
        EXPECT_EQ(bytes.size(),
                  ::write(ends[1], bytes.constData(), static_cast<size_t>(bytes.size())));
        ::close(ends[1]);
    });
    LineReader reader(ends[0]);
    int total = 0;
    while (const auto piece = reader.next()) {
        EXPECT_LE(piece->size(), LineReader::kMaxLineBytes + 4096);
        total += piece->size();
    }
    EXPECT_EQ(LineReader::kMaxLineBytes + 10000, total);
    writer.join();
    ::close(ends[0]);
}

TEST(Lines, StopEndsTheWait)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    LineReader reader(ends[0]);
    reader.stop();
    EXPECT_FALSE(reader.next().has_value());
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace tavmir::host
