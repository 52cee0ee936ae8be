// Which frames answer a request: the transaction, the station and the function alone do not tell,
// since a repeated request has the number of the one before it.
#include "link/reply_matcher.h"

#include "test_server.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

// Function code of reads and writes of a class, and the bytes of its values.
struct ClassOnWire {
    char read;
    char write;
    int valueBytes;
};

constexpr ClassOnWire kClasses[] = {{'d', 'e', 1}, {'f', 'g', 2}, {'l', 'm', 4}};

FrameView view(const QByteArray& frame)
{
    return wire::viewFrame(reinterpret_cast<const unsigned char*>(frame.constData()),
                           static_cast<size_t>(frame.size()));
}

std::string kindOf(const QByteArray& request, const QByteArray& reply)
{
    switch (classifyReply(view(request), view(reply))) {
    case ReplyKind::answer:
        return "answer";
    case ReplyKind::exception:
        return "exception";
    case ReplyKind::foreign:
        break;
    }
    return "foreign";
}

// A frame with an entry for each address: its four bytes, and `valueBytes` of a value.
QByteArray frame(char function, const std::vector<int>& addresses, int valueBytes,
                 int transactionId = 7)
{
    QByteArray header = wordRequest(transactionId, 1).left(9);
    header[7] = function;
    header[8] = static_cast<char>(addresses.size());
    QByteArray entries;
    for (const int address : addresses) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            entries += static_cast<char>(address >> shift & 0xFF);
        }
        entries += QByteArray(valueBytes, '\5');
    }
    return replyTo(header, entries);
}

} // namespace

TEST(ReplyMatching, ReadIsAnsweredByItsOwnAddressesInTheirOrder)
{
    const std::vector<int> asked = {16, 0x01020304, 4096};
    for (const ClassOnWire& one : kClasses) {
        const QByteArray request = frame(one.read, asked, 0);
        const auto kind = [&](const std::vector<int>& addresses) {
            return kindOf(request, frame(one.read, addresses, one.valueBytes));
        };
        EXPECT_EQ("answer", kind(asked)) << one.read;
        EXPECT_EQ("foreign", kind({17, 0x01020304, 4096})) << one.read;
        EXPECT_EQ("foreign", kind({16, 0x01020305, 4096})) << one.read;
        EXPECT_EQ("foreign", kind({16, 0x02020304, 4096})) << one.read;
        EXPECT_EQ("foreign", kind({16, 0x01020304, 4097})) << one.read;
        EXPECT_EQ("foreign", kind({16, 4096, 0x01020304})) << one.read;
    }
}

TEST(ReplyMatching, ReadOfAnotherCountIsForeign)
{
    const std::vector<int> asked = {16, 32};
    for (const ClassOnWire& one : kClasses) {
        const QByteArray request = frame(one.read, asked, 0);
        for (const auto& addresses : {std::vector<int>{}, {16}, {16, 32, 48}}) {
            EXPECT_EQ("foreign", kindOf(request, frame(one.read, addresses, one.valueBytes)))
                << one.read << " with " << addresses.size();
        }
    }
}

TEST(ReplyMatching, FullRequestIsAnsweredAndEachOfItsAddressesCounts)
{
    const int counts[] = {45, 38, 28}; // the most that the driver puts into one
    for (size_t i = 0; i < 3; ++i) {
        std::vector<int> asked;
        for (int k = 0; k < counts[i]; ++k) {
            asked.push_back(16 * k);
        }
        const QByteArray request = frame(kClasses[i].read, asked, 0);
        EXPECT_EQ("answer",
                  kindOf(request, frame(kClasses[i].read, asked, kClasses[i].valueBytes)));
        for (int& address : asked) {
            address += 1;
            EXPECT_EQ("foreign",
                      kindOf(request, frame(kClasses[i].read, asked, kClasses[i].valueBytes)));
            address -= 1;
        }
    }
}

TEST(ReplyMatching, WriteIsAnsweredByItsCount)
{
    for (const ClassOnWire& one : kClasses) {
        const QByteArray request = frame(one.write, {16, 32, 48}, one.valueBytes);
        QByteArray reply = replyTo(request, QByteArray());
        EXPECT_EQ("answer", kindOf(request, reply)) << one.write;
        for (const int count : {0, 1, 2, 4, 255}) {
            reply[8] = static_cast<char>(count);
            EXPECT_EQ("foreign", kindOf(request, reply)) << one.write << " of " << count;
        }
    }
}

TEST(ReplyMatching, ExceptionIsToldByItsFunctionWhateverItsCode)
{
    for (const ClassOnWire& one : kClasses) {
        for (const char function : {one.read, one.write}) {
            const int valueBytes = function == one.read ? 0 : one.valueBytes;
            const QByteArray request = frame(function, {16, 32}, valueBytes);
            for (const int code : {1, 2, 3, 4, 200}) {
                EXPECT_EQ("exception", kindOf(request, exceptionTo(request, code)));
            }
            QByteArray other = exceptionTo(request, 2);
            other[7] = static_cast<char>(other.at(7) ^ 1);
            EXPECT_EQ("foreign", kindOf(request, other));
            other = exceptionTo(request, 2);
            other[6] = static_cast<char>(other.at(6) + 1);
            EXPECT_EQ("foreign", kindOf(request, other));
            EXPECT_EQ("foreign",
                      kindOf(request, exceptionTo(frame(function, {16, 32}, valueBytes, 8), 2)));
        }
    }
}

// A reply may be shorter than its count says: none of its addresses is looked for behind its end.
TEST(ReplyMatching, ShortRepliesAreNotLookedAtBehindTheirEnd)
{
    const QByteArray request = frame('f', {16, 32, 48}, 0);
    const QByteArray whole = frame('f', {16, 32, 48}, 2);
    for (int size = 9; size < whole.size(); ++size) {
        const QByteArray part = QByteArray(whole.constData(), size); // ends where its memory ends
        EXPECT_NE("exception", kindOf(request, part)) << size;
    }
}

} // namespace tavmir::host
