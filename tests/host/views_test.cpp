// What each output format shows: all values, one change, messages, and the end.
#include "captured_console.h"
#include "host/csv_view.h"
#include "host/json_view.h"
#include "host/plain_view.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

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

TEST(RunView, EachFormatHasItsView)
{
    bool json = false;
    bool csv = false;
    bool plain = false;
    {
        CapturedConsole captured; // no terminal
        Console& console = captured.console();
        json = dynamic_cast<JsonView*>(
                   makeRunView(OutputFormat::json, false, false, console).get()) != nullptr;
        csv = dynamic_cast<CsvView*>(makeRunView(OutputFormat::csv, false, false, console).get()) !=
              nullptr;
        plain = dynamic_cast<PlainView*>(
                    makeRunView(OutputFormat::table, false, false, console).get()) != nullptr;
    }
    EXPECT_TRUE(json);
    EXPECT_TRUE(csv);
    EXPECT_TRUE(plain);
}

} // namespace tavmir::host
