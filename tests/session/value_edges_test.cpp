// Values and places at the edge of what is accepted reach the controller as they are, and come
// back.
#include "running_session.h"

namespace tavmir::host
{

namespace
{

struct Edge {
    const char* address;
    const char* value;
    char readFunction;
    quint32 place;
    quint32 number;    // as the controller has it
    const char* shown; // when it is read
};

constexpr Edge kEdges[] = {
    {"M.w", "65535", 'f', kWordAt, 0xFFFF, "65535"},
    {"M.w", "-32768", 'f', kWordAt, 0x8000, "32768"},
    {"M.w", "-1", 'f', kWordAt, 0xFFFF, "65535"},
    {"M.w", "0", 'f', kWordAt, 0, "0"},
    {"M.d", "4294967295", 'l', kDwordAt, 0xFFFFFFFF, "4294967295"},
    {"M.d", "-2147483648", 'l', kDwordAt, 0x80000000, "2147483648"},
    {"M.d", "0x00FF00FF", 'l', kDwordAt, 0x00FF00FF, "16711935"},
    {"M.d", "0", 'l', kDwordAt, 0, "0"},
    {"M.r", "-2.5", 'l', kRealAt, 0xC0200000, "-2.5"},
    {"M.r", "0", 'l', kRealAt, 0, "0"},
    {"M.bit", "1", 'd', kBitAt, 1, "1"},
    {"M.bit", "0", 'd', kBitAt, 0, "0"},
    {"M.a[0]", "258", 'f', kArrayAt, 258, "258"},
    {"M.a[9]", "259", 'f', kArrayAt + 9 * 16, 259, "259"},
    {"M.hexed[A]", "1", 'f', kHexedAt, 1, "1"},
    {"M.hexed[D]", "2", 'f', kHexedAt + 3 * 16, 2, "2"},
    {"M.pair[0]", "65536", 'l', kPairAt, 65536, "65536"},
    {"M.pair[9]", "16777216", 'l', kPairAt + 9 * 32, 16777216, "16777216"},
    {"M.many[29999]", "3", 'f', kManyAt + 29999 * 16, 3, "3"},
};

class ValueEdges : public RunningSession
{
protected:
    quint32 textWord(quint32 start, int word)
    {
        return controller_.get('f', start + static_cast<quint32>(16 * word));
    }
};

} // namespace

TEST_F(ValueEdges, OfNumbers)
{
    open();
    for (const Edge& edge : kEdges) {
        EXPECT_EQ("done", write(edge.address, edge.value).state) << edge.address;
        EXPECT_EQ(edge.number, controller_.get(edge.readFunction, edge.place))
            << edge.address << " = " << edge.value;
        EXPECT_EQ(edge.shown, read(edge.address).value) << edge.address << " = " << edge.value;
    }
}

TEST_F(ValueEdges, FirstAndLastBit)
{
    controller_.set('f', kWordAt, 0x0810);
    controller_.set('l', kDwordAt, 0x00810810);
    open();
    for (const char* bit : {"M.w.b[0]", "M.w.b[15]", "M.d.b[0]", "M.d.b[31]"}) {
        EXPECT_EQ("0", read(bit).value) << bit;
        EXPECT_EQ("done", write(bit, "1").state) << bit;
        EXPECT_EQ("1", read(bit).value) << bit;
    }
    EXPECT_EQ(0x8811u, controller_.get('f', kWordAt));
    EXPECT_EQ(0x80810811u, controller_.get('l', kDwordAt));
    for (const char* bit : {"M.w.b[0]", "M.w.b[15]", "M.d.b[0]", "M.d.b[31]"}) {
        EXPECT_EQ("done", write(bit, "0").state) << bit;
    }
    EXPECT_EQ(0x0810u, controller_.get('f', kWordAt));
    EXPECT_EQ(0x00810810u, controller_.get('l', kDwordAt));
}

TEST_F(ValueEdges, TextsOfEveryLength)
{
    open();
    for (const int length : {0, 1, 2, 75, 76, 77, 78, 119, 120}) {
        controller_.set('f', kTextAt + 16 * kTextWords, 0xABCD); // behind the text
        for (int word = 0; word < kTextWords; ++word) {
            controller_.set('f', kTextAt + static_cast<quint32>(16 * word), 0xFFFF);
        }
        const QString text(length, 'x');
        EXPECT_EQ("done", write("M.text", text).state) << length;
        for (int word = 0; word < kTextWords; ++word) {
            const int left = length - 2 * word;
            const quint32 expected = left >= 2 ? 0x7878 : left == 1 ? 0x78 : 0;
            EXPECT_EQ(expected, textWord(kTextAt, word)) << length << ", word " << word;
        }
        EXPECT_EQ(0xABCDu, textWord(kTextAt, kTextWords));
        EXPECT_EQ(text.toStdString(), read("M.text").value);
    }
}

TEST_F(ValueEdges, TextsOfAnArrayAreApart)
{
    open();
    for (const char* value : {"abcdef", "", "g"}) {
        for (const char* address : {"M.names[1]", "M.names[2]", "M.names[3]"}) {
            EXPECT_EQ("done", write(address, QString("%1").arg(value)).state);
        }
        EXPECT_EQ("done", write("M.names[2]", "middle").state);
        EXPECT_EQ(value, read("M.names[1]").value);
        EXPECT_EQ("middle", read("M.names[2]").value);
        EXPECT_EQ(value, read("M.names[3]").value);
    }
}

// The project's highest station and the lowest, and every place of a request.
TEST_F(ValueEdges, FirstAndLastStation)
{
    for (const int station : {0, 255}) {
        Setting setting;
        setting.connection = ", \"station\": " + QByteArray::number(station);
        open(setting);
        EXPECT_EQ("done", write("M.w", QString::number(station + 1)).state);
        EXPECT_EQ(static_cast<quint32>(station + 1), controller_.getAt(station, 'f', kWordAt));
        EXPECT_EQ(std::to_string(station + 1), read("M.w").value);
        reset();
    }
}

} // namespace tavmir::host
