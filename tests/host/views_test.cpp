// What each output format shows: all values, one change, messages, and the end.
#include "captured_console.h"
#include "host/csv_view.h"
#include "host/json_view.h"
#include "host/plain_view.h"
#include "host/screen_view.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <unistd.h>

namespace tavmir::host
{

namespace
{

using project::Format;

const std::vector<ValueRow> kRows = {
    {"level", "M.w", "12", Format::unsignedNumber, 5, Quality::good},
    {"never", "M.x", QString(), Format::unsignedNumber, std::nullopt, Quality::never, "why"},
    {"old", "M.y", "7", Format::unsignedNumber, 9, Quality::stale, "late"},
};
const LineState kConnected = {true, "connected to h:1"};

// 2026-03-01T12:00:00.123Z
const WallClock::time_point kThen(std::chrono::milliseconds(1772366400123));

// What a view puts on standard output and standard error.
struct Shown {
    std::string out;
    std::string err;
};

template <typename View> Shown shownBy(const std::function<void(RunView&)>& use)
{
    CapturedConsole captured;
    {
        View view(captured.console());
        use(view);
    }
    captured.finish();
    return {captured.out(), captured.err()};
}

// Times of showing as T: "2026-03-01T12:00:00.123Z" each.
std::string withoutTimes(const std::string& text)
{
    static const std::regex time(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)");
    return std::regex_replace(text, time, "T");
}

} // namespace

TEST(PlainView, ShowsABlockOfText)
{
    const Shown shown = shownBy<PlainView>([](RunView& view) { view.show(kRows, kConnected); });
    EXPECT_EQ("T  connected to h:1\n"
              "NAME   ADDRESS  VALUE    AGE  QUALITY\n"
              "level  M.w      12      5 ms\n"
              "never  M.x      –      never  never: why\n"
              "old    M.y      7 ~     9 ms  stale: late\n"
              "\n",
              withoutTimes(shown.out));
    EXPECT_EQ("", shown.err);
}

TEST(PlainView, ShowsAChangeWithTheTimeOfItsReply)
{
    const Shown shown = shownBy<PlainView>([](RunView& view) {
        view.change(kRows[0], kThen);
        view.change({"t", "M.t", "a\nb", Format::text, 0, Quality::good}, kThen);
        view.change(kRows[2], kThen);
    });
    EXPECT_EQ("2026-03-01T12:00:00.123Z  M.w = 12\n"
              "2026-03-01T12:00:00.123Z  M.t = a\\x0ab\n"
              "2026-03-01T12:00:00.123Z  M.y = 7 ~ (stale: late)\n",
              shown.out);
}

TEST(PlainView, MessagesStandBesideTheValues)
{
    const Shown shown = shownBy<PlainView>([](RunView& view) {
        view.message("connected");
        view.close({"one", "two"}, {{"not", "shown"}});
    });
    EXPECT_EQ("one\ntwo\n", shown.out);
    EXPECT_EQ("connected\n", shown.err);
}

TEST(PlainView, ColoursWhatIsNotGoodWhenToldTo)
{
    CapturedConsole captured;
    {
        PlainView view(captured.console(), true);
        view.show({kRows[2]}, kConnected);
        view.change(kRows[2], kThen);
    }
    captured.finish();
    EXPECT_NE(std::string::npos, captured.out().find("M.y      \x1b[2m7 ~  \x1b[0m  9 ms"))
        << captured.out();
    EXPECT_NE(std::string::npos, captured.out().find("M.y = \x1b[2m7 ~\x1b[0m (stale: late)"));
}

TEST(JsonView, ShowsAllValuesInOneLine)
{
    const Shown shown = shownBy<JsonView>([](RunView& view) {
        view.show(kRows, kConnected);
        view.show({}, {false, "not connected"});
    });
    EXPECT_EQ(R"({"connected":true,"state":"connected to h:1","time":"T","values":[)"
              R"({"address":"M.w","ageMs":5,"name":"level","quality":"good","reason":null,)"
              R"("value":12},{"address":"M.x","ageMs":null,"name":"never","quality":"never",)"
              R"("reason":"why","value":null},{"address":"M.y","ageMs":9,"name":"old",)"
              R"("quality":"stale","reason":"late","value":7}]})"
              "\n"
              R"({"connected":false,"state":"not connected","time":"T","values":[]})"
              "\n",
              withoutTimes(shown.out));
    EXPECT_EQ("", shown.err);
}

TEST(JsonView, ShowsAChangeWithTheTimeOfItsReply)
{
    const Shown shown = shownBy<JsonView>([](RunView& view) { view.change(kRows[0], kThen); });
    EXPECT_EQ(R"({"address":"M.w","name":"level","quality":"good","reason":null,)"
              R"("time":"2026-03-01T12:00:00.123Z","value":12})"
              "\n",
              shown.out);
}

TEST(JsonView, EndsWithTheStatisticsAsAnObject)
{
    const Shown shown = shownBy<JsonView>([](RunView& view) {
        view.message("connected");
        view.close({"not shown"}, {{"requests", 3}});
    });
    EXPECT_EQ("{\"statistics\":{\"requests\":3}}\n", shown.out);
    EXPECT_EQ("connected\n", shown.err);
}

TEST(CsvView, ShowsAHeadingOnceAndARowForEachValue)
{
    const Shown shown = shownBy<CsvView>([](RunView& view) {
        view.show(kRows, kConnected);
        view.show(kRows, kConnected);
    });
    EXPECT_EQ("time,name,address,value,age_ms,quality,reason\n"
              "T,level,M.w,12,5,good,\nT,never,M.x,,,never,why\nT,old,M.y,7,9,stale,late\n"
              "T,level,M.w,12,5,good,\nT,never,M.x,,,never,why\nT,old,M.y,7,9,stale,late\n",
              withoutTimes(shown.out));
    EXPECT_EQ("", shown.err);
}

TEST(CsvView, WithoutValuesThereIsTheHeadingAlone)
{
    const Shown shown = shownBy<CsvView>([](RunView& view) { view.show({}, kConnected); });
    EXPECT_EQ("time,name,address,value,age_ms,quality,reason\n", shown.out);
}

TEST(CsvView, ShowsAChangeAsARowAtTheTimeOfItsReply)
{
    const Shown shown = shownBy<CsvView>([](RunView& view) {
        view.change({"level", "M.w", "12", Format::unsignedNumber, 0, Quality::good}, kThen);
        view.change({"level", "M.w", "13", Format::unsignedNumber, 0, Quality::good}, kThen);
    });
    EXPECT_EQ("time,name,address,value,age_ms,quality,reason\n"
              "2026-03-01T12:00:00.123Z,level,M.w,12,0,good,\n"
              "2026-03-01T12:00:00.123Z,level,M.w,13,0,good,\n",
              shown.out);
}

TEST(CsvView, StandardOutputHoldsValuesOnly)
{
    const Shown shown = shownBy<CsvView>([](RunView& view) {
        view.message("connected");
        view.close({"one", "two"}, {});
    });
    EXPECT_EQ("", shown.out);
    EXPECT_EQ("connected\none\ntwo\n", shown.err);
}

// Standard output of these tests is a file: the screen has the usual 24 rows of 80 columns.
TEST(ScreenView, DrawsInPlaceAndClearsOnce)
{
    const Shown shown = shownBy<ScreenView>([](RunView& view) { view.show(kRows, kConnected); });
    EXPECT_EQ("\x1b[2J\x1b[H"
              "T  connected to h:1\x1b[K\r\n"
              "NAME   ADDRESS  VALUE    AGE  QUALITY\x1b[K\r\n"
              "level  M.w      12      5 ms\x1b[K\r\n"
              "never  M.x      –      never  never: why\x1b[K\r\n"
              "old    M.y      7 ~     9 ms  stale: late\x1b[K\r\n"
              "\x1b[J",
              withoutTimes(shown.out));
    EXPECT_EQ("", shown.err);
    CapturedConsole captured;
    {
        ScreenView view(captured.console());
        view.show({}, kConnected);
        captured.console().out().finish(10000);
        view.show({}, kConnected);
    }
    captured.finish();
    const std::string drawing = "\x1b[HT  connected to h:1\x1b[K\r\n"
                                "NAME  ADDRESS  VALUE  AGE  QUALITY\x1b[K\r\n\x1b[J";
    EXPECT_EQ("\x1b[2J" + drawing + drawing, withoutTimes(captured.out()));
}

TEST(ScreenView, ShowsWhatFitsAndHowMuchMoreThereIs)
{
    const auto shownRows = [](size_t count, int messages) {
        const std::vector<ValueRow> rows(count, kRows[0]);
        const Shown shown = shownBy<ScreenView>([&](RunView& view) {
            for (int i = 0; i < messages; ++i) {
                view.message("m" + QString::number(i));
            }
            view.show(rows, kConnected);
        });
        std::string lines;
        for (size_t at = shown.out.find("level"); at != std::string::npos;
             at = shown.out.find("level", at + 1)) {
            lines += 'v';
        }
        const size_t more = shown.out.find("… ");
        return lines + (more == std::string::npos
                            ? ""
                            : shown.out.substr(more, shown.out.find("\x1b", more) - more));
    };
    EXPECT_EQ(std::string(21, 'v'), shownRows(21, 0)) << "with heading, state and a free line 24";
    EXPECT_EQ(std::string(20, 'v') + "… 2 more", shownRows(22, 0));
    EXPECT_EQ(std::string(20, 'v'), shownRows(20, 1));
    EXPECT_EQ(std::string(19, 'v') + "… 2 more", shownRows(21, 1));
    EXPECT_EQ(std::string(15, 'v') + "… 85 more", shownRows(100, 9)) << "five messages at most";
}

TEST(ScreenView, TheLatestMessagesStandBelow)
{
    const Shown shown = shownBy<ScreenView>([](RunView& view) {
        for (int i = 1; i <= 6; ++i) {
            view.message(QString("message %1").arg(i));
        }
        view.show({}, kConnected);
    });
    EXPECT_EQ("\x1b[2J\x1b[HT  connected to h:1\x1b[K\r\n"
              "NAME  ADDRESS  VALUE  AGE  QUALITY\x1b[K\r\n"
              "message 2\x1b[K\r\nmessage 3\x1b[K\r\nmessage 4\x1b[K\r\n"
              "message 5\x1b[K\r\nmessage 6\x1b[K\r\n\x1b[J",
              withoutTimes(shown.out));
    EXPECT_EQ("", shown.err);
}

TEST(ScreenView, LinesAreCutAtTheEdge)
{
    const Shown shown = shownBy<ScreenView>([](RunView& view) {
        view.message(QString(80, 'a'));
        view.message(QString(81, 'b'));
        view.show({}, kConnected);
    });
    EXPECT_NE(std::string::npos, shown.out.find(std::string(80, 'a') + "\x1b[K"));
    EXPECT_NE(std::string::npos, shown.out.find("\r\n" + std::string(80, 'b') + "\x1b[K"));
}

TEST(ScreenView, APictureThatNobodyTakesIsFollowedByNoOther)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(0, ::pipe(ends));
    quint64 dropped = 1;
    {
        CapturedConsole captured(ends[1]);
        captured.console().print(QString(static_cast<int>(Output::kMostWaiting) - 10, 'x'));
        ScreenView view(captured.console());
        view.show(kRows, kConnected);
        dropped = captured.console().out().dropped();
        ::close(ends[0]);
        captured.finish();
    }
    ::close(ends[1]);
    EXPECT_EQ(0u, dropped) << "it was not even tried";
}

TEST(ScreenView, ShowsAChangeAndTheEndAsLines)
{
    const Shown shown = shownBy<ScreenView>([](RunView& view) {
        view.change(kRows[0], kThen);
        view.close({"one", "two"}, {{"not", "shown"}});
    });
    EXPECT_EQ("2026-03-01T12:00:00.123Z  M.w = 12\none\ntwo\n", shown.out);
    EXPECT_EQ("", shown.err);
}

TEST(RunView, EachFormatHasItsView)
{
    bool json = false;
    bool csv = false;
    bool plain = false;
    {
        CapturedConsole captured; // no terminal
        Console& console = captured.console();
        json = dynamic_cast<JsonView*>(makeRunView(OutputFormat::json, false, console).get()) !=
               nullptr;
        csv =
            dynamic_cast<CsvView*>(makeRunView(OutputFormat::csv, false, console).get()) != nullptr;
        plain = dynamic_cast<PlainView*>(makeRunView(OutputFormat::table, false, console).get()) !=
                nullptr;
    }
    EXPECT_TRUE(json);
    EXPECT_TRUE(csv);
    EXPECT_TRUE(plain);
}

} // namespace tavmir::host
