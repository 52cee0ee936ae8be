// The probe's command line.
#include "options.h"

#include <gtest/gtest.h>

#include <vector>

using namespace tavmir::probe;

namespace
{

struct Parsed {
    std::string error;
    Options options;
};

Parsed parse(const std::vector<const char*>& arguments)
{
    Parsed parsed;
    parsed.error =
        parseOptions(static_cast<int>(arguments.size()), arguments.data(), parsed.options);
    return parsed;
}

TEST(ProbeOptions, NothingIsNeeded)
{
    const Parsed parsed = parse({});
    EXPECT_EQ(parsed.error, "");
    EXPECT_TRUE(parsed.options.controller.host.empty());
    EXPECT_FALSE(parsed.options.records || parsed.options.help || parsed.options.version);
}

TEST(ProbeOptions, AReadIsTakenApart)
{
    const Parsed parsed =
        parse({"--connect", "plc.example:5020", "--station", "7", "--read", "dword:4096:12",
               "--timeout", "250", "--library", "x.so", "--records"});
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(parsed.options.controller.host, "plc.example");
    EXPECT_EQ(parsed.options.controller.port, 5020);
    EXPECT_EQ(parsed.options.station, 7);
    EXPECT_EQ(parsed.options.dataType, 6);
    EXPECT_EQ(parsed.options.elementAddress, 4096);
    EXPECT_EQ(parsed.options.count, 12);
    EXPECT_EQ(parsed.options.timeoutMs, 250);
    EXPECT_EQ(parsed.options.library, "x.so");
    EXPECT_TRUE(parsed.options.records);
}

TEST(ProbeOptions, ACaptureIsOfARead)
{
    const Parsed parsed =
        parse({"--connect", "h:1", "--read", "word:0", "--capture", "line.pcapng"});
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(parsed.options.capture, "line.pcapng");
    EXPECT_EQ(parse({"--capture", "line.pcapng"}).error,
              "--capture has nothing to show without --read");
    EXPECT_EQ(parse({"--capture", ""}).error, "--capture wants a file");
}

TEST(ProbeOptions, TypesHaveNamesAndNumbers)
{
    const struct {
        const char* text;
        int dataType;
    } types[] = {{"bit:1", 1}, {"word:1", 4}, {"dword:1", 6}, {"text:1", 10}, {"1:1", 1},
                 {"4:1", 4},   {"6:1", 6},    {"7:1", 7},     {"10:1", 10}};
    for (const auto& type : types) {
        EXPECT_EQ(parse({"--connect", "h:1", "--read", type.text}).options.dataType, type.dataType);
    }
}

TEST(ProbeOptions, AnAddressOfSixteenBytesStandsInBrackets)
{
    const Parsed parsed = parse({"--connect", "[::1]:5020", "--read", "bit:0"});
    EXPECT_EQ(parsed.options.controller.host, "::1");
    EXPECT_EQ(parsed.options.controller.port, 5020);
}

TEST(ProbeOptions, EdgesAreAllowed)
{
    const std::vector<std::vector<const char*>> right = {
        {"--connect", "h:1", "--read", "bit:0"},
        {"--connect", "h:65535", "--read", "bit:2147483647:1"},
        {"--connect", "h:1", "--read", "bit:0:4096"},
        {"--station", "0"},
        {"--station", "255"},
        {"--timeout", "1"},
        {"--timeout", "600000"},
    };
    for (const auto& arguments : right) {
        EXPECT_EQ(parse(arguments).error, "") << arguments.back();
    }
}

TEST(ProbeOptions, WrongOnesAreNamed)
{
    const std::vector<std::vector<const char*>> wrong = {
        {"--connect", "h:1"},
        {"--read", "bit:1"},
        {"--connect", "h", "--read", "bit:1"},
        {"--connect", ":5", "--read", "bit:1"},
        {"--connect", "::1:5020", "--read", "bit:1"},
        {"--connect", "h:0", "--read", "bit:1"},
        {"--connect", "h:65536", "--read", "bit:1"},
        {"--connect", "h:1", "--read", "bit"},
        {"--connect", "h:1", "--read", "byte:1"},
        {"--connect", "h:1", "--read", "bit:-1"},
        {"--connect", "h:1", "--read", "bit:2147483648"},
        {"--connect", "h:1", "--read", "bit:1:0"},
        {"--connect", "h:1", "--read", "bit:1:4097"},
        {"--connect", "h:1", "--read", "bit:1:"},
        {"--station", "256"},
        {"--timeout", "0"},
        {"--timeout", "600001"},
        {"--library", ""},
        {"--library"},
        {"--unknown", "1"},
        {"stray"},
    };
    for (const auto& arguments : wrong) {
        const Parsed parsed = parse(arguments);
        EXPECT_NE(parsed.error, "") << arguments.back();
        EXPECT_EQ(parsed.error.find('\n'), std::string::npos);
    }
}

} // namespace
