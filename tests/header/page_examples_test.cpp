// The code of the manual pages, compiled as it stands there and run: the labels of PassVarName_2(3)
// resolve as the page says, and the loop of ComCommunication(3) hands over the right answers.
#include "address/Func_Check.h"
#include "support/cycle_test.h"

#include <vector>

using namespace tavmir::test;

namespace labels_page
{
#include "PassVarName_2.3.inc"
} // namespace labels_page

namespace loop_page
{

// What the page leaves to the host. Answers come from `answers`, one a call; then nothing does.
static std::vector<QByteArray> sent;
static std::vector<QByteArray> answers;
static int waits = 0;
static int rounds = 0;

static bool running()
{
    return rounds-- > 0;
}

static void waitForWork()
{
    ++waits;
}

static void sendFrame(const QByteArray& frame)
{
    sent.push_back(frame);
}

static QByteArray receiveFrame()
{
    if (answers.empty()) {
        return QByteArray();
    }
    const QByteArray answer = answers.front();
    answers.erase(answers.begin());
    return answer;
}

#include "ComCommunication.3.inc"

} // namespace loop_page

namespace
{

class LabelsOfThePage : public DriverTest
{
protected:
    LabelsOfThePage() { labels_page::passLabels(); }

    static ControlInformationM resolved(const char* address)
    {
        ControlInformationM info;
        EXPECT_EQ(get_label_address_info(QString::fromLatin1(address), info), 0) << address;
        return info;
    }
};

TEST_F(LabelsOfThePage, AWordMayNameItsBits)
{
    const ControlInformationM info = resolved("Main.State.b[5]");
    EXPECT_EQ(info.dataType, 4);
    EXPECT_EQ(info.elementAddress, 3000);
    EXPECT_EQ(info.bitAccess, 1);
    EXPECT_EQ(info.bitIndex, 5);
}

TEST_F(LabelsOfThePage, AnArrayHasAsManyElementsAsHighMinusLow)
{
    const ControlInformationM info = resolved("Main.Recipe[15]");
    EXPECT_EQ(info.dataType, 6);
    EXPECT_EQ(info.elementAddress, 4000 + 15 * 32);
    EXPECT_EQ(info.elementLimit, 16);
}

TEST_F(LabelsOfThePage, ATextIsReadOnceInAsManyWordsAsItHas)
{
    RW_VAR var;
    var.addressText = "Main.Operator";
    var.count = 100;
    EXPECT_EQ(AddListOnceReadVar(&var), 10);
    EXPECT_EQ(PLC_driver.onceReadList.first().elementAddress, 5000);
}

TEST_F(LabelsOfThePage, ATextPolledWholeIsOneEntry)
{
    HOSTVAR var;
    var.addressText = "Main.Operator";
    var.count = 10;
    QList<HOSTVAR> screen;
    screen << var;
    EXPECT_EQ(ReCreatReadVarList(&screen), 1);
    EXPECT_EQ(diagnostics.lines().size(), 2) << "one line at its begin, one an entry";
}

TEST_F(LabelsOfThePage, AStructureOfAnArrayLiesAStrideFurther)
{
    const ControlInformationM info = resolved("Main.Axis[2].Velocity");
    EXPECT_EQ(info.dataType, 6);
    EXPECT_EQ(info.elementAddress, 6000 + 2 * 64 + 32);
}

class LoopOfThePage : public CycleTest
{
protected:
    LoopOfThePage()
    {
        loop_page::sent.clear();
        loop_page::answers.clear();
        loop_page::waits = 0;
    }

    // What the loop sees in so many rounds.
    static void loop(int rounds)
    {
        loop_page::rounds = rounds;
        loop_page::communicate();
    }

    // The answer to the first request on one word, with the value 0x1234.
    static QByteArray rightAnswer() { return hex("00 00 00 00 00 09 01 66 01 00 00 00 10 12 34"); }
};

TEST_F(LoopOfThePage, HandsOverTheAnswerOfItsRequest)
{
    poll(4, 16);
    loop_page::answers.push_back(rightAnswer());
    loop(1);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_F(LoopOfThePage, WaitsOnWhenTheAnswerIsAnothers)
{
    poll(4, 16);
    const char* others[] = {"00 01 00 00 00 09 01 66 01 00 00 00 10 99 99",  // transaction
                            "00 00 00 01 00 09 01 66 01 00 00 00 10 99 99",  // protocol
                            "00 00 00 00 00 09 02 66 01 00 00 00 10 99 99",  // station
                            "00 00 00 00 00 09 01 64 01 00 00 00 10 99 99"}; // function
    for (const char* other : others) {
        loop_page::answers.push_back(hex(other));
    }
    loop_page::answers.push_back(rightAnswer());
    loop(1);
    EXPECT_EQ(loop_page::sent.size(), 1u);
    EXPECT_EQ(PLC_driver.wordCache.value(16), 0x1234);
}

TEST_F(LoopOfThePage, ARefusalCountsAsNoAnswer)
{
    host.info.retryLimit = 1;
    poll(4, 16);
    loop_page::answers.push_back(hex("00 00 00 00 00 03 01 E6 02"));
    loop(1);
    EXPECT_EQ(host.info.retryCount, 1);
    EXPECT_EQ(PLC_driver.protocolList.size(), 1);
}

TEST_F(LoopOfThePage, AsksOnceMoreBeforeItWaits)
{
    // Five turns of writes, then the one empty call, then the rest of the writes.
    queueWrites(5 * 38 + 1, 4);
    host.info.retryLimit = 0;
    for (int i = 0; i < 6; ++i) {
        QByteArray answer = hex("00 00 00 00 00 03 01 67 26");
        answer[1] = char(i);
        loop_page::answers.push_back(answer);
    }
    loop(6);
    EXPECT_EQ(loop_page::waits, 0);
    EXPECT_TRUE(PLC_driver.writeVarList.isEmpty());
    loop(1);
    EXPECT_EQ(loop_page::waits, 1);
}

} // namespace
