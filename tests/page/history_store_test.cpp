// The memory of values: exact, bounded, and honest about what is gone.
#include "page/history_store.h"

#include "page/sample_buckets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tavmir::host
{

namespace
{

HistoryPiece pieceOf(const HistoryStore& store, size_t track, qint64 from, qint64 to,
                     size_t points = 100000)
{
    return store.piece(track, from, to, points);
}

using Numbers = std::vector<double>;

// What is no number is the same as such.
std::vector<std::string> texts(const Numbers& numbers)
{
    std::vector<std::string> texts;
    for (const double number : numbers) {
        texts.push_back(std::to_string(number));
    }
    return texts;
}

} // namespace

TEST(HistoryStore, EverySampleComesBack)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    std::mt19937 random(7);
    Numbers times;
    Numbers values;
    qint64 at = 1000;
    for (int i = 0; i < 20000; ++i) {
        at += static_cast<qint64>(random() % 3 == 0 ? random() % 100000 : random() % 120);
        const auto number = static_cast<quint32>(random() % 2 == 0 ? random() : random() % 10);
        store.addSample(track, at, number);
        times.push_back(static_cast<double>(at));
        values.push_back(number);
    }
    const HistoryPiece piece = pieceOf(store, track, 0, at);
    EXPECT_EQ(times, piece.t);
    EXPECT_EQ(values, piece.min);
    EXPECT_EQ(values, piece.max);
    EXPECT_EQ(values, piece.last);
}

TEST(HistoryStore, AWindowBeginsWithWhatStoodThere)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    for (int i = 1; i <= 1000; ++i) {
        store.addSample(track, 100 * i, static_cast<quint32>(i));
    }
    EXPECT_EQ((Numbers{50000, 50100, 50200}), pieceOf(store, track, 50050, 50250).t);
    EXPECT_EQ((Numbers{50100, 50200}), pieceOf(store, track, 50100, 50200).t);
    EXPECT_EQ((Numbers{100000}), pieceOf(store, track, 200000, 300000).t);
    EXPECT_TRUE(pieceOf(store, track, 0, 50).t.empty());
}

TEST(HistoryStore, TooManySamplesAreSpansWithTheirBounds)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    for (int i = 0; i < 1000; ++i) {
        store.addSample(track, i, i == 555 ? 9000 : static_cast<quint32>(i % 10));
    }
    const HistoryPiece piece = pieceOf(store, track, 0, 1000, 11);
    EXPECT_LE(piece.t.size(), 11);
    EXPECT_GE(piece.t.size(), 10);
    EXPECT_EQ(0, *std::min_element(piece.min.begin(), piece.min.end()));
    EXPECT_EQ(9000, *std::max_element(piece.max.begin(), piece.max.end()));
    EXPECT_EQ(9, piece.last.back());
}

TEST(HistoryStore, AValueThatStaysCountsInTheNextSpan)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    store.addSample(track, 10, 100);
    store.addSample(track, 20, 3);
    store.addSample(track, 60, 5);
    const HistoryPiece piece = pieceOf(store, track, 0, 100, 2);
    ASSERT_EQ(1, piece.t.size());
    EXPECT_EQ(3, piece.min[0]);
    const HistoryPiece two = store.piece(track, 0, 100, 2);
    EXPECT_EQ(100, two.max[0]);
    store.addSample(track, 70, 6);
    const HistoryPiece three = pieceOf(store, track, 0, 100, 3);
    ASSERT_EQ(2, three.t.size());
    EXPECT_EQ(50, three.t[1]) << "the span's beginning";
    EXPECT_EQ(3, three.min[1]) << "stood there when the span began";
    EXPECT_EQ(6, three.last[1]);
}

TEST(HistoryStore, ATimeThatIsNotGoodIsAGap)
{
    HistoryStore store(0);
    const size_t track = store.addTrack();
    store.setGap(track, 100, "never: x");
    store.setGap(track, 200, QString());
    store.setGap(track, 500, "stale: y");
    const HistoryPiece piece = pieceOf(store, track, 150, 600);
    ASSERT_EQ(2, piece.gaps.size());
    EXPECT_EQ(100, piece.gaps[0].from);
    EXPECT_EQ(200, piece.gaps[0].to);
    EXPECT_EQ("never: x", piece.gaps[0].reason);
    EXPECT_EQ(600, piece.gaps[1].to) << "it goes on";
    EXPECT_TRUE(pieceOf(store, track, 250, 400).gaps.empty());
}

TEST(HistoryStore, TheOldestGoAndItIsKnownFromWhenAllIsThere)
{
    HistoryStore store(1, 100000);
    const size_t busy = store.addTrack();
    const size_t quiet = store.addTrack();
    store.addSample(quiet, 5, 42);
    EXPECT_EQ(1, store.from());
    std::mt19937 random(1);
    for (int i = 10; i < 100000; ++i) {
        store.addSample(busy, i, static_cast<quint32>(random()));
    }
    EXPECT_LE(store.bytes(), 100000);
    EXPECT_GT(store.bytes(), 90000);
    EXPECT_GT(store.from(), 80000);
    const HistoryPiece piece = pieceOf(store, busy, 0, 100000);
    EXPECT_EQ(store.from(), *piece.oldest);
    EXPECT_LE(piece.t.front(), static_cast<double>(store.from() + 1));
    EXPECT_EQ(99999, piece.t.back());
    EXPECT_EQ((Numbers{42}), pieceOf(store, quiet, 99000, 100000).last) << "it still stands";
}

TEST(HistoryStore, AsMuchIsKeptHoweverMuchWasDropped)
{
    const auto keptOf = [](int samples) {
        HistoryStore store(0, 100000);
        const size_t track = store.addTrack();
        for (int i = 0; i < samples; ++i) {
            store.addSample(track, i, static_cast<quint32>(i) * 7919);
        }
        return static_cast<double>(pieceOf(store, track, 0, samples, 1000000).t.size());
    };
    const double kept = keptOf(100000);
    EXPECT_NEAR(kept, keptOf(1000000), kept / 10);
}

TEST(HistoryStore, MoreGapsThatHoldThanThereIsRoomStopNobody)
{
    HistoryStore store(0, 20000);
    for (size_t track = 0; track < 1000; ++track) {
        store.setGap(store.addTrack(), 1, "bad: refused");
    }
    const int kSamples = 10000;
    for (int i = 10; i < kSamples; ++i) {
        store.addSample(7, i, static_cast<quint32>(i) * 7919);
    }
    const HistoryPiece piece = pieceOf(store, 7, 0, kSamples);
    EXPECT_EQ(kSamples - 1, piece.t.back());
    EXPECT_LT(piece.t.size(), 1000) << "the older ones went";
}

TEST(HistoryStore, AGapThatStillHoldsIsNeverDropped)
{
    HistoryStore store(0, 20000);
    const size_t busy = store.addTrack();
    const size_t other = store.addTrack();
    store.setGap(other, 1, "bad: refused");
    for (int i = 10; i < 50000; ++i) {
        store.addSample(busy, i, static_cast<quint32>(i) * 7919);
    }
    EXPECT_EQ("bad: refused", pieceOf(store, other, 40000, 50000).gaps.at(0).reason);
}

TEST(HistoryStore, TenMinutesOfAThousandVariablesFit)
{
    HistoryStore store(0);
    for (int track = 0; track < 100; ++track) { // a tenth of them in a tenth of the room
        store.addTrack();
    }
    std::mt19937 random(3);
    for (int i = 0; i < 6000; ++i) {
        for (size_t track = 0; track < 100; ++track) {
            store.addSample(track, 100 * i, static_cast<quint32>(random())); // the worst to pack
        }
    }
    EXPECT_LE(store.bytes(), HistoryStore::kMostBytes / 10);
}

// Whole blocks are summed up: that shows nowhere.
TEST(HistoryStore, ThinnedItIsTheSameAsOneByOne)
{
    for (const NumberShape shape : {NumberShape::unsignedNumber, NumberShape::signed16,
                                    NumberShape::signed32, NumberShape::floating}) {
        HistoryStore store(0);
        const size_t track = store.addTrack(shape);
        std::mt19937 random(11);
        std::vector<std::pair<qint64, double>> samples;
        qint64 at = 1000;
        for (int i = 0; i < 30000; ++i) {
            at += static_cast<qint64>(i % 5000 == 0 ? 200000 : random() % 20);
            const auto number = static_cast<quint32>(random()) & (i % 2 == 0 ? 0xFFFFU : ~0U);
            store.addSample(track, at, number);
            samples.emplace_back(at, numberOf(shape, number));
        }
        for (const qint64 from : {qint64(0), qint64(1000), samples[777].first}) {
            for (const size_t points : {2U, 11U, 400U, 2000U}) {
                HistoryPiece expected;
                SampleBuckets buckets(from, at, points - 1, expected);
                auto first = std::upper_bound(
                    samples.begin(), samples.end(), from,
                    [](qint64 moment, const auto& sample) { return moment < sample.first; });
                for (first -= first == samples.begin() ? 0 : 1; first != samples.end(); ++first) {
                    buckets.add(first->first, first->second);
                }
                buckets.end();
                const HistoryPiece piece = pieceOf(store, track, from, at, points);
                EXPECT_EQ(expected.t, piece.t);
                EXPECT_EQ(texts(expected.min), texts(piece.min));
                EXPECT_EQ(texts(expected.max), texts(piece.max));
                EXPECT_EQ(texts(expected.last), texts(piece.last));
            }
        }
    }
}

TEST(HistoryStore, OtherNumbersFromNowOnAreOthersInThePastToo)
{
    HistoryStore store(0);
    const size_t track = store.addTrack(NumberShape::signed16);
    for (int i = 0; i < 5000; ++i) {
        store.addSample(track, i, 0xFFFF);
    }
    store.setShape(track, NumberShape::unsignedNumber);
    store.addSample(track, 6000, 7);
    const HistoryPiece piece = pieceOf(store, track, 0, 7000, 10);
    EXPECT_EQ(65535, piece.min.front());
    EXPECT_EQ(65535, *std::max_element(piece.max.begin(), piece.max.end()));
    EXPECT_EQ(7, piece.last.back());
}

TEST(HistoryStore, ANumberIsWhatItIsShownAs)
{
    const auto isAsShown = [](project::DataType type, project::Format format, int bytes) {
        project::Element element;
        element.type = type;
        for (const quint32 bits : {0U, 1U, 0x7FFFU, 0x8000U, 0xFFFFU, 0x3F800000U, 0x7F800000U,
                                   0x80000000U, 0xC0490FDBU, 0xFFFFFFFFU}) {
            QByteArray memory;
            quint32 number = 0;
            for (int i = 0; i < bytes; ++i) {
                memory.append(static_cast<char>(bits >> (8 * i) & 0xFF));
                number |= bits & 0xFFU << (8 * i);
            }
            const double shown = project::decodeNumber(element, format, memory)
                                     .value_or(std::numeric_limits<double>::quiet_NaN());
            const double kept = numberOf(shapeOf(element, format), number);
            EXPECT_TRUE(shown == kept || (std::isnan(shown) && std::isnan(kept))) << bits;
        }
    };
    using project::DataType;
    using project::Format;
    isAsShown(DataType::word, Format::unsignedNumber, 2);
    isAsShown(DataType::word, Format::signedNumber, 2);
    isAsShown(DataType::word, Format::hex, 2);
    isAsShown(DataType::dword, Format::unsignedNumber, 4);
    isAsShown(DataType::dword, Format::signedNumber, 4);
    isAsShown(DataType::dword, Format::floating, 4);
    isAsShown(DataType::real, Format::floating, 4);
    isAsShown(DataType::real, Format::automatic, 4);
}

TEST(HistoryStore, RoomThatATrackHadIsGivenToOthers)
{
    HistoryStore store(0, 200000);
    for (size_t track = 0; track < 20; ++track) {
        store.addTrack();
    }
    const auto fill = [&](size_t track) {
        for (int i = 0; i < 100000; ++i) {
            const auto at = static_cast<qint64>(track) * 100000 + i;
            store.addSample(track, at, static_cast<quint32>(i) * 7919);
        }
        return pieceOf(store, track, 0, std::numeric_limits<qint64>::max()).t.size();
    };
    const size_t first = fill(0);
    size_t last = 0;
    for (size_t track = 1; track < 20; ++track) {
        last = fill(track);
    }
    EXPECT_GT(last, first * 9 / 10);
}

} // namespace tavmir::host
