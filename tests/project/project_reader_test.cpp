// What a project file may hold, and the message for each thing that is wrong.
#include "project/project_reader.h"

#include "project/address_resolver.h"

#include "support/temporary_folder.h"
#include "test_project.h"

#include <gmock/gmock.h>

namespace tavmir::project
{

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

// A project with one label, and something more.
QByteArray with(const QByteArray& more)
{
    return QByteArray(R"({ "types": [ { "name": "S", "size": 64, "members": [
        { "name": "a", "type": "word", "offset": 0 }, { "name": "r", "type": "real", "offset": 32 } ] } ],
      "labels": [ { "name": "L", "variables": [
        { "name": "w", "type": "word", "address": 16, "bits": true },
        { "name": "b", "type": "bit", "address": 8 },
        { "name": "t", "type": "text", "address": 64, "words": 2 },
        { "name": "v", "type": "word", "address": 160, "array": { "bounds": [[0, 3]] } },
        { "name": "s", "type": "S", "address": 320, "array": { "bounds": [[0, 3]] } } ] } ])") +
           more + "}";
}

QByteArray variable(const QByteArray& text)
{
    return "{ \"labels\": [ { \"name\": \"L\", \"variables\": [ " + text + " ] } ] }";
}

QByteArray type(const QByteArray& text)
{
    return "{ \"types\": [ " + text + " ] }";
}

} // namespace

TEST(Reader, TakesEveryMemberOver)
{
    const Project project = readGood(with(R"(,
      "connection": { "host": "plc", "port": 1502, "station": 7, "stationMode": "own",
        "connectTimeoutMs": 11, "replyTimeoutMs": 12, "reconnectMinMs": 13, "reconnectMaxMs": 14,
        "passMs": 15, "retryLimit": 0, "writeMode": "local" },
      "polled": [ { "address": "L.s", "format": "signed", "station": 3 },
                  { "address": "L.v[1]", "count": 2, "name": "two" } ],
      "initial": [ { "address": "L.t", "value": "ab" }, { "address": "L.b", "value": true },
                   { "address": "L.w", "value": -5 } ],
      "signals": [ { "address": "L.w", "signal": "randomWalk", "low": 0, "high": 9, "step": 2,
                     "seed": 3, "periodMs": 50 },
                   { "address": "L.b", "signal": "constant", "value": 1 } ])"));
    EXPECT_EQ("plc", project.connection.host.toStdString());
    EXPECT_EQ(1502, project.connection.port);
    EXPECT_EQ(7, project.connection.station);
    EXPECT_TRUE(project.connection.ownStations);
    EXPECT_EQ(11, project.connection.connectTimeoutMs);
    EXPECT_EQ(12, project.connection.replyTimeoutMs);
    EXPECT_EQ(13, project.connection.reconnectMinMs);
    EXPECT_EQ(14, project.connection.reconnectMaxMs);
    EXPECT_EQ(15, project.connection.passMs);
    EXPECT_EQ(0, project.connection.retryLimit);
    EXPECT_FALSE(project.connection.writesToController);
    ASSERT_EQ(2u, project.polled.size());
    EXPECT_EQ(3, project.polled[0].station.value());
    EXPECT_EQ(Format::signedNumber, project.polled[0].format);
    EXPECT_EQ("L.s", project.polled[0].name.toStdString());
    EXPECT_EQ(2, project.polled[1].count);
    EXPECT_EQ("two", project.polled[1].name.toStdString());
    ASSERT_EQ(3u, project.initial.size());
    EXPECT_EQ("1", project.initial[1].value.toStdString());
    EXPECT_EQ("-5", project.initial[2].value.toStdString());
    ASSERT_EQ(2u, project.movingSignals.size());
    EXPECT_EQ(SignalKind::randomWalk, project.movingSignals[0].kind);
    EXPECT_EQ(2.0, project.movingSignals[0].step);
    EXPECT_EQ(3u, project.movingSignals[0].seed);
    EXPECT_EQ(50, project.movingSignals[0].periodMs);
    EXPECT_EQ(1.0, project.movingSignals[1].low);
    EXPECT_EQ(1.0, project.movingSignals[1].high);
    ASSERT_EQ(1u, project.types.size());
    EXPECT_EQ(0, project.labels[0].variables[4].structure);
    EXPECT_TRUE(project.labels[0].variables[0].bitsAllowed);
}

TEST(Reader, ConnectionHasDefaults)
{
    const Connection connection = readGood("{}").connection;
    EXPECT_EQ(5020, connection.port);
    EXPECT_EQ(2, connection.retryLimit);
    EXPECT_FALSE(connection.ownStations);
    EXPECT_TRUE(connection.writesToController);
}

TEST(Reader, MalformedJsonHasLineAndColumn)
{
    EXPECT_EQ("test.json: line 3, column 4: unterminated object",
              refusal("{\n\"labels\": []\n  x }"));
    EXPECT_THAT(refusal(""), HasSubstr("test.json: line 1, column 1: "));
    EXPECT_THAT(refusal("{\"labels\": [1, 2"), HasSubstr("line 1, column"));
    EXPECT_EQ("test.json: must be one JSON object", refusal("[]"));
}

TEST(Reader, AFileThatEndsTooSoonIsCalledThat)
{
    const std::string place = "test.json: line ";
    const std::string middle = ": the file ends in the middle of ";
    EXPECT_EQ(place + "3, column 16" + middle + "a list that begins at line 2, column 11",
              refusal("{\n\"labels\": [\n { \"name\": 1 },\n\n"));
    EXPECT_EQ(place + "1, column 2" + middle + "an object that begins at line 1, column 1",
              refusal("{"));
    EXPECT_EQ(place + "1, column 10" + middle + "a text that begins at line 1, column 7",
              refusal("{\"a\": \"xy"));
    EXPECT_EQ(place + "1, column 4" + middle + "a text that begins at line 1, column 2",
              refusal("{\"a"));
    for (const char* text :
         {"{\"a\"", "{\"a\":", "{\"a\": tru", "{\"a\": true", "{\"a\": 12", "{\"a\": -",
          "{\"a\": 1e", "{\"a\": [1, 2", "{\"a\": [1,", "{\"a\": [1] ", "{\"a\": \"x\\",
          "{\"a\": \"x\\u00", "{\"a\": \"\xc3", "{\"a\": {} ,", "{\"a\": {"}) {
        EXPECT_THAT(refusal(text), HasSubstr(middle)) << text;
    }
    EXPECT_EQ("test.json: line 1, column 1: the file is empty", refusal(" \n"));
}

TEST(Reader, EveryBeginningOfAProjectEndsTooSoon)
{
    const QByteArray whole(kPlant);
    for (int size = 1; size < whole.size(); ++size) {
        const std::string message = refusal(whole.left(size));
        ASSERT_THAT(message, HasSubstr(": the file ends in the middle of ")) << size;
    }
}

TEST(Reader, WhatIsWrongBeforeTheEndIsSaidFirst)
{
    EXPECT_EQ("test.json: line 1, column 7: illegal number", refusal("{\"a\": ?, \"b\": ["));
    EXPECT_THAT(refusal("{\"a\": [1}"), HasSubstr("unterminated array"));
    EXPECT_THAT(refusal("{\"a\" 1, \"b\": {"), HasSubstr("missing name separator"));
    EXPECT_THAT(refusal("{ \"a\": 1, \"a\": {"), HasSubstr("column 11: key \"a\" is given twice"));
    EXPECT_THAT(refusal("{ \"labels\": [] } }"), HasSubstr("garbage at the end of the document"));
}

TEST(Reader, DuplicateKeysHaveLineAndColumn)
{
    EXPECT_EQ("test.json: line 2, column 1: key \"labels\" is given twice",
              refusal("{ \"labels\": [],\n\"labels\": [] }"));
    EXPECT_EQ("test.json: line 1, column 39: key \"port\" is given twice",
              refusal("{ \"connection\": { \"port\": 1, \"a\": {}, \"port\": 2 } }"));
    readGood(R"({ "types": [], "labels": [], "polled": [] })");
}

TEST(Reader, ARefusalIsOneLineWhateverKeysHold)
{
    EXPECT_EQ("test.json: line 2, column 6: key \"a\\u000ab\" is given twice",
              refusal("{\"a\nb\":1,\"a\nb\":2}"));
    EXPECT_THAT(refusal(R"({"a\nb": 1})"), StartsWith("test.json: a\\u000ab: unknown key"));
}

TEST(Reader, NestingAndSizeAreLimited)
{
    EXPECT_EQ("test.json: line 1, column 33: nested deeper than 32 levels",
              refusal(QByteArray(40, '[')));
    EXPECT_EQ("test.json: larger than 16777216 bytes", refusal(QByteArray(kMaxFileBytes + 1, ' ')));
}

TEST(Reader, BytesWithoutMeaningAreRefused)
{
    for (const char* text :
         {"\"", "{\"", "{\"a\\", "}", "]]", "{,}", "\xff\xfe", "{\"a\":\"\\u\"}", "nul"}) {
        EXPECT_THAT(refusal(text), HasSubstr("test.json: ")) << text;
    }
    EXPECT_THAT(refusal(QByteArray("{\0}", 3)), HasSubstr("line 1"));
}

TEST(Reader, UnknownKeysAreNamed)
{
    EXPECT_THAT(refusal(R"({ "label": [] })"),
                HasSubstr("test.json: label: unknown key; known here: connection,"));
    EXPECT_THAT(refusal(R"({ "connection": { "hots": "x" } })"),
                HasSubstr("connection.hots: unknown key"));
    EXPECT_THAT(refusal(variable(R"({ "name": "w", "type": "word", "address": 1, "offset": 2 })")),
                HasSubstr("labels[0].variables[0].offset: unknown key"));
}

TEST(Reader, WrongJsonTypesAreNamed)
{
    EXPECT_EQ("test.json: labels: must be a list, not an object", refusal(R"({ "labels": {} })"));
    EXPECT_EQ("test.json: labels[0]: must be an object, not a number",
              refusal(R"({ "labels": [1] })"));
    EXPECT_EQ("test.json: connection.host: must be a text, not a number",
              refusal(R"({ "connection": { "host": 1 } })"));
    EXPECT_EQ("test.json: connection.port: must be a whole number, not a text",
              refusal(R"({ "connection": { "port": "1" } })"));
    EXPECT_EQ("test.json: connection.port: must be a whole number, not 1.5",
              refusal(R"({ "connection": { "port": 1.5 } })"));
    EXPECT_EQ("test.json: connection: must be an object, not null",
              refusal(R"({ "connection": null })"));
    EXPECT_EQ("test.json: labels[0].variables[0].bits: must be true or false, not a number",
              refusal(variable(R"({ "name": "w", "type": "word", "address": 1, "bits": 1 })")));
}

TEST(Reader, ConnectionIsChecked)
{
    EXPECT_EQ("test.json: connection.port: 65536 is outside 1..65535",
              refusal(R"({ "connection": { "port": 65536 } })"));
    EXPECT_EQ("test.json: connection.station: 256 is outside 0..255",
              refusal(R"({ "connection": { "station": 256 } })"));
    EXPECT_EQ("test.json: connection.host: is empty",
              refusal(R"({ "connection": { "host": "" } })"));
    EXPECT_EQ("test.json: connection.reconnectMaxMs: 5 is below reconnectMinMs 100",
              refusal(R"({ "connection": { "reconnectMaxMs": 5 } })"));
    EXPECT_EQ("test.json: connection.stationMode: \"x\" is neither \"own\" nor \"default\"",
              refusal(R"({ "connection": { "stationMode": "x" } })"));
    EXPECT_EQ("test.json: connection.writeMode: \"x\" is neither \"controller\" nor \"local\"",
              refusal(R"({ "connection": { "writeMode": "x" } })"));
    EXPECT_EQ("test.json: connection.replyTimeoutMs: 0 is outside 1..600000",
              refusal(R"({ "connection": { "replyTimeoutMs": 0 } })"));
    EXPECT_EQ("test.json: connection.passMs: -1 is outside 0..600000",
              refusal(R"({ "connection": { "passMs": -1 } })"));
}

TEST(Reader, NamesAreChecked)
{
    EXPECT_EQ("test.json: labels[0].name: is missing", refusal(R"({ "labels": [ {} ] })"));
    EXPECT_EQ("test.json: labels[0].name: is empty",
              refusal(R"({ "labels": [ { "name": "" } ] })"));
    for (const char* name : {"a.b", "a[", "a]", "a,b", "a~b", "a=b", "a\\n"}) {
        const QByteArray json = variable("{ \"name\": \"" + QByteArray(name) +
                                         "\", \"type\": \"bit\", \"address\": 1 }");
        EXPECT_THAT(refusal(json), HasSubstr("labels[0].variables[0].name: \"a")) << name;
    }
    EXPECT_EQ("test.json: labels[0].variables[1].name: \"w\" is there already",
              refusal(variable(R"({ "name": "w", "type": "bit", "address": 1 },
                                  { "name": "w", "type": "bit", "address": 2 })")));
    EXPECT_EQ("test.json: labels[1].name: \"L\" is there already", refusal(R"({ "labels": [
                { "name": "L", "variables": [ { "name": "w", "type": "bit", "address": 1 } ] },
                { "name": "L", "variables": [ { "name": "w", "type": "bit", "address": 1 } ] } ] })"));
    EXPECT_EQ(
        "test.json: types[1].name: \"S\" is there already",
        refusal(type(R"({ "name": "S", "size": 8, "members": [] }, { "name": "S", "size": 8 })")));
    EXPECT_EQ("test.json: types[0].name: \"word\" is the name of a plain type",
              refusal(type(R"({ "name": "word", "size": 8, "members": [] })")));
}

TEST(Reader, LongTextsAreCutInMessages)
{
    const QByteArray json = variable("{ \"name\": \"w\", \"type\": \"" + QByteArray(5000, 'x') +
                                     "\", \"address\": 1 }");
    EXPECT_LT(refusal(json).size(), 200u);
}

TEST(Reader, VariablesAreChecked)
{
    EXPECT_EQ("test.json: labels[0].variables: is missing",
              refusal(R"({ "labels": [ { "name": "L" } ] })"));
    EXPECT_EQ("test.json: labels[0].variables: is empty", refusal(variable("")));
    EXPECT_EQ("test.json: labels[0].variables[0].type: unknown type \"wrod\"",
              refusal(variable(R"({ "name": "w", "type": "wrod", "address": 1 })")));
    EXPECT_EQ("test.json: labels[0].variables[0].address: is missing",
              refusal(variable(R"({ "name": "w", "type": "word" })")));
    EXPECT_EQ("test.json: labels[0].variables[0].address: -1 is outside 0..4294967295",
              refusal(variable(R"({ "name": "w", "type": "word", "address": -1 })")));
    EXPECT_EQ("test.json: labels[0].variables[0].bits: only a word or dword has bits",
              refusal(variable(R"({ "name": "w", "type": "real", "address": 1, "bits": true })")));
    EXPECT_EQ("test.json: labels[0].variables[0].words: only a text has words",
              refusal(variable(R"({ "name": "w", "type": "word", "address": 1, "words": 2 })")));
    EXPECT_EQ("test.json: labels[0].variables[0].words: is missing",
              refusal(variable(R"({ "name": "w", "type": "text", "address": 1 })")));
    EXPECT_EQ("test.json: labels[0].variables[0].words: 1025 is outside 1..1024",
              refusal(variable(R"({ "name": "w", "type": "text", "address": 1, "words": 1025 })")));
    EXPECT_EQ("test.json: labels[0].variables[0].words: a text in an array has at most 16 words",
              refusal(variable(R"({ "name": "w", "type": "text", "address": 1, "words": 17,
                                    "array": { "bounds": [[0, 1]] } })")));
    EXPECT_EQ("test.json: labels[0].variables[0]: ends beyond the last address 4294967295",
              refusal(variable(R"({ "name": "w", "type": "dword", "address": 4294967265 })")));
    readGood(variable(R"({ "name": "w", "type": "dword", "address": 4294967264 })"));
}

TEST(Reader, FormatsBelongToVariablesAndMembers)
{
    const Project project = readGood(R"({
      "types": [ { "name": "S", "size": 32, "members": [
        { "name": "f", "type": "dword", "offset": 0, "format": "float" } ] } ],
      "labels": [ { "name": "L", "variables": [
        { "name": "w", "type": "word", "address": 0, "format": "signed", "bits": true },
        { "name": "v", "type": "word", "address": 160, "format": "hex",
          "array": { "bounds": [[0, 3]] } },
        { "name": "s", "type": "S", "address": 320, "array": { "bounds": [[0, 3]] } },
        { "name": "b", "type": "bit", "address": 640, "format": "bit" },
        { "name": "r", "type": "real", "address": 672, "format": "float" },
        { "name": "p", "type": "word", "address": 704 } ] } ],
      "initial": [ { "address": "L.s[1].f", "value": 20.5 }, { "address": "L.w", "value": -5 } ],
      "signals": [ { "address": "L.s[0].f", "signal": "sine", "low": -0.5, "high": 1e9 } ] })");
    const auto formatOf = [&](const char* address) {
        return resolveAddress(project, address).element.format;
    };
    EXPECT_EQ(Format::signedNumber, formatOf("L.w"));
    EXPECT_EQ(Format::hex, formatOf("L.v[3]"));
    EXPECT_EQ(Format::floating, formatOf("L.s[2].f"));
    EXPECT_EQ(Format::bit, formatOf("L.b"));
    EXPECT_EQ(Format::automatic, formatOf("L.p"));
}

TEST(Reader, FormatsAreChecked)
{
    const auto format = [](const char* type, const char* name) {
        return refusal(variable("{ \"name\": \"w\", \"address\": 1, \"type\": \"" +
                                QByteArray(type) + "\", \"format\": \"" + name + "\" }"));
    };
    const std::string place = "test.json: labels[0].variables[0].format: ";
    EXPECT_EQ(place + "unknown format \"octal\"", format("word", "octal"));
    EXPECT_EQ(place + "a word is signed, unsigned or hex, not float", format("word", "float"));
    EXPECT_EQ(place + "a dword is signed, unsigned, hex or float, not bit", format("dword", "bit"));
    EXPECT_EQ(place + "a bit is bit, not unsigned", format("bit", "unsigned"));
    EXPECT_EQ(place + "a real is float, not hex", format("real", "hex"));
    EXPECT_EQ("test.json: types[0].members[0].format: a word is signed, unsigned or hex, not text",
              refusal(type(R"({ "name": "S", "size": 16, "members": [
                { "name": "a", "type": "word", "offset": 0, "format": "text" } ] })")));
    EXPECT_EQ("test.json: labels[0].variables[4].format: must be a text, not a number",
              refusal(QByteArray(with("")).replace(R"("address": 320)",
                                                   R"("address": 320, "format": 1)")));
    EXPECT_EQ(
        "test.json: labels[0].variables[4].format: a structure has none; its members may have",
        refusal(QByteArray(with("")).replace(R"("address": 320)",
                                             R"("address": 320, "format": "hex")")));
    EXPECT_EQ(
        "test.json: initial[0].value: \"65535\" is not a value of L.w: signed, -32768 to 32767",
        refusal(QByteArray(with(R"(, "initial": [ { "address": "L.w", "value": 65535 } ])"))
                    .replace(R"("bits": true)", R"("bits": true, "format": "signed")")));
}

TEST(Reader, ArraysAreChecked)
{
    const auto array = [](const char* text) {
        return refusal(
            variable("{ \"name\": \"w\", \"type\": \"word\", \"address\": 1, \"array\": " +
                     QByteArray(text) + " }"));
    };
    const std::string place = "test.json: labels[0].variables[0].array.";
    EXPECT_EQ(place + "bounds: 1 to 8 pairs of low and high bound are needed", array("{}"));
    EXPECT_EQ(place + "bounds[0]: must be a pair [low, high]", array(R"({ "bounds": [1, 2] })"));
    EXPECT_EQ(place + "bounds[1]: must be a pair [low, high]",
              array(R"({ "bounds": [[1, 2], [3]] })"));
    EXPECT_EQ(place + "bounds[0]: high bound 1 is not above low bound 1",
              array(R"({ "bounds": [[1, 1]] })"));
    EXPECT_EQ(place + "bounds[0][1]: 1000001 is outside -1000000..1000000",
              array(R"({ "bounds": [[1, 1000001]] })"));
    EXPECT_EQ(place + "bounds: more than 1000000 elements",
              array(R"({ "bounds": [[0, 1000], [0, 1000]] })"));
    EXPECT_EQ(place + "radix: 37 is outside 2..36",
              array(R"({ "radix": 37, "bounds": [[0, 1]] })"));
    EXPECT_THAT(array(R"({ "bounds": [[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1]] })"),
                HasSubstr("1 to 8 pairs"));
    EXPECT_THAT(array("[[0, 1]]"), HasSubstr("array: must be an object, not a list"));
}

TEST(Reader, StructuresAreChecked)
{
    EXPECT_EQ("test.json: types[0].members[0]: ends at bit 48, beyond the structure's size 40",
              refusal(type(R"({ "name": "S", "size": 40, "members": [
                { "name": "a", "type": "word", "offset": 32 } ] })")));
    EXPECT_EQ("test.json: types[0]: structure \"S\" contains itself",
              refusal(type(R"({ "name": "S", "size": 40, "members": [
                { "name": "a", "type": "T", "offset": 0 } ] },
                { "name": "T", "size": 40, "members": [ { "name": "b", "type": "S", "offset": 0 } ] })")));
    EXPECT_EQ("test.json: types[0].size: is missing", refusal(type(R"({ "name": "S" })")));
    EXPECT_EQ("test.json: types[0].members: is missing",
              refusal(type(R"({ "name": "S", "size": 1 })")));
}

TEST(Reader, StructureNestingIsLimited)
{
    QByteArray types =
        R"({ "name": "T0", "size": 8, "members": [ { "name": "a", "type": "bit", "offset": 0 } ] })";
    for (int i = 1; i <= kMaxStructureDepth; ++i) {
        types +=
            QString(
                R"(, { "name": "T%1", "size": 8, "members": [ { "name": "a", "type": "T%2", "offset": 0 } ] })")
                .arg(i)
                .arg(i - 1)
                .toUtf8();
    }
    EXPECT_EQ("test.json: types[16]: structures nest deeper than 16", refusal(type(types)));
}

TEST(Reader, ElementsOfAllLabelsAreLimited)
{
    // 64 bits hold eight structures of eight structures …: 8^7 leaves without being long.
    QByteArray types =
        R"({ "name": "T0", "size": 1, "members": [ { "name": "a", "type": "bit", "offset": 0 } ] })";
    for (int i = 1; i <= 7; ++i) {
        types += QString(R"(, { "name": "T%1", "size": %3, "members": [
                 { "name": "a", "type": "T%2", "offset": 0, "array": { "bounds": [[0, 7]] } } ] })")
                     .arg(i)
                     .arg(i - 1)
                     .arg(1 << (3 * i))
                     .toUtf8();
    }
    const QByteArray json = "{ \"types\": [" + types +
                            "], \"labels\": [ { \"name\": \"L\", \"variables\": [ "
                            "{ \"name\": \"w\", \"type\": \"T7\", \"address\": 0 } ] } ] }";
    EXPECT_EQ("test.json: labels[0].variables[0]: the labels hold more than 1000000 elements",
              refusal(json));
}

TEST(Reader, PolledEntriesAreChecked)
{
    EXPECT_EQ("test.json: polled[0].address: is missing", refusal(with(R"(, "polled": [ {} ])")));
    EXPECT_EQ("test.json: polled[0].address: \"L.x\": label L has no variable x",
              refusal(with(R"(, "polled": [ { "address": "L.x" } ])")));
    EXPECT_EQ("test.json: polled[0].format: unknown format \"octal\"",
              refusal(with(R"(, "polled": [ { "address": "L.w", "format": "octal" } ])")));
    EXPECT_EQ("test.json: polled[0].format: L.w cannot be shown as text",
              refusal(with(R"(, "polled": [ { "address": "L.w", "format": "text" } ])")));
    EXPECT_EQ("test.json: polled[1].address: \"L.w\" is there already",
              refusal(with(R"(, "polled": [ { "address": "L.w" }, { "address": "L.w" } ])")));
    EXPECT_EQ(
        "test.json: polled[1].name: \"n\" is there already",
        refusal(with(
            R"(, "polled": [ { "address": "L.w", "name": "n" }, { "address": "L.b", "name": "n" } ])")));
    EXPECT_EQ("test.json: polled[0].station: 300 is outside 0..255",
              refusal(with(R"(, "polled": [ { "address": "L.w", "station": 300 } ])")));
    EXPECT_EQ("test.json: polled[0].count: 0 is outside 1..1000000",
              refusal(with(R"(, "polled": [ { "address": "L.v[0]", "count": 0 } ])")));
    EXPECT_EQ(
        "test.json: polled[0].address: \"L.v[2]\": 3 elements from L.v[2] on pass the high bound 3",
        refusal(with(R"(, "polled": [ { "address": "L.v[2]", "count": 3 } ])")));
}

TEST(Reader, StationsOfPolledEntriesNeedStationsOfTheirOwn)
{
    const QByteArray polled =
        R"(, "polled": [ { "address": "L.b" }, { "address": "L.w", "station": 3 } ])";
    EXPECT_EQ("test.json: polled[1].station: needs the connection's \"stationMode\": \"own\"; with "
              "\"default\" all is asked of its one station",
              refusal(with(polled)));
    EXPECT_THAT(refusal(with(R"(, "connection": { "stationMode": "default" })" + polled)),
                HasSubstr("polled[1].station: "));
    const Project project = readGood(with(R"(, "connection": { "stationMode": "own" })" + polled));
    EXPECT_EQ(3, project.polled[1].station.value());
}

TEST(Reader, FormatOfManyElementsNeedNotFitAll)
{
    readGood(with(R"(, "polled": [ { "address": "L.s", "format": "signed" } ])"));
}

TEST(Reader, InitialValuesAreChecked)
{
    EXPECT_EQ("test.json: initial[0].value: \"65536\" is not a value of L.w: signed or unsigned, "
              "-32768 to 65535",
              refusal(with(R"(, "initial": [ { "address": "L.w", "value": 65536 } ])")));
    EXPECT_EQ("test.json: initial[0].value: is missing",
              refusal(with(R"(, "initial": [ { "address": "L.w" } ])")));
    EXPECT_EQ("test.json: initial[0].value: must be a number, a text, true or false",
              refusal(with(R"(, "initial": [ { "address": "L.w", "value": null } ])")));
    EXPECT_EQ("test.json: initial[0].value: \"1.5\" is not a value of L.w: signed or unsigned, "
              "-32768 to 65535",
              refusal(with(R"(, "initial": [ { "address": "L.w", "value": 1.5 } ])")));
    EXPECT_EQ("test.json: initial[0].address: \"L.v\": L.v is an array and needs an index",
              refusal(with(R"(, "initial": [ { "address": "L.v", "value": 1 } ])")));
    EXPECT_EQ(
        "test.json: initial[1].address: \"L.w\" is there already",
        refusal(with(
            R"(, "initial": [ { "address": "L.w", "value": 1 }, { "address": "L.w", "value": 2 } ])")));
}

TEST(Reader, SignalsAreChecked)
{
    const auto signal = [](const char* text) {
        return refusal(with(", \"signals\": [ { " + QByteArray(text) + " } ]"));
    };
    const std::string place = "test.json: signals[0].";
    EXPECT_EQ(place + "signal: unknown signal \"saw\"",
              signal(R"("address": "L.w", "signal": "saw")"));
    EXPECT_EQ(place + "low: is missing", signal(R"("address": "L.w", "signal": "ramp")"));
    EXPECT_EQ(place + "high: 65536 is outside -32768..65535",
              signal(R"("address": "L.w", "signal": "ramp", "low": 0, "high": 65536)"));
    EXPECT_EQ(place + "high: 1 is not above low 1",
              signal(R"("address": "L.w", "signal": "ramp", "low": 1, "high": 1)"));
    EXPECT_EQ(place + "address: L.t is a text and cannot move",
              signal(R"("address": "L.t", "signal": "constant", "value": 1)"));
    EXPECT_THAT(signal(R"("address": "L.w", "signal": "ramp", "low": 0, "high": 1, "seed": 1)"),
                HasSubstr(place + "seed: unknown key"));
    EXPECT_EQ(place + "step: must be above 0",
              signal(R"("address": "L.w", "signal": "counter", "low": 0, "high": 1, "step": 0)"));
    EXPECT_EQ(place + "periodMs: 0 is outside 1..86400000",
              signal(R"("address": "L.w", "signal": "ramp", "low": 0, "high": 1, "periodMs": 0)"));
    EXPECT_EQ(place + "value: must be a number, not a text",
              signal(R"("address": "L.w", "signal": "constant", "value": "1")"));
    EXPECT_EQ("test.json: signals[1].address: \"L.w\" is there already",
              refusal(with(R"(, "signals": [ { "address": "L.w", "signal": "constant", "value": 1 },
                                             { "address": "L.w", "signal": "constant", "value": 1 } ])")));
}

TEST(Reader, LimitsThemselvesAreAllowed)
{
    for (const char* connection :
         {R"("port": 1, "station": 0, "replyTimeoutMs": 1, "retryLimit": 0)",
          R"("port": 65535, "station": 255, "replyTimeoutMs": 600000, "retryLimit": 1000)",
          R"("reconnectMinMs": 70, "reconnectMaxMs": 70)", R"("passMs": 0)",
          R"("passMs": 600000)"}) {
        readGood("{ \"connection\": { " + QByteArray(connection) + " } }");
    }
    EXPECT_EQ("test.json: connection.port: 0 is outside 1..65535",
              refusal(R"({ "connection": { "port": 0 } })"));
    readGood(variable(R"({ "name": "w", "type": "text", "address": 1, "words": 1024 })"));
    readGood(variable(R"({ "name": "w", "type": "text", "address": 1, "words": 16,
                           "array": { "bounds": [[0, 1]] } })"));
    readGood(variable(R"({ "name": "w", "type": "bit", "address": 1, "array": { "bounds":
                           [[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1]] } })"));
    readGood(type(R"({ "name": "S", "size": 48, "members": [
                       { "name": "a", "type": "word", "offset": 32 } ] })"));
    readGood(with(R"(, "signals": [ { "address": "L.w", "signal": "ramp", "low": -32768,
                                      "high": 65535, "periodMs": 86400000 } ])"));
    readGood(with(R"(, "polled": [ { "address": "L.v[2]", "count": 2 } ])"));
}

TEST(Reader, SixteenStructuresMayNest)
{
    QByteArray types =
        R"({ "name": "T0", "size": 8, "members": [ { "name": "a", "type": "bit", "offset": 0 } ] })";
    for (int i = 1; i < kMaxStructureDepth; ++i) {
        types +=
            QString(
                R"(, { "name": "T%1", "size": 8, "members": [ { "name": "a", "type": "T%2", "offset": 0 } ] })")
                .arg(i)
                .arg(i - 1)
                .toUtf8();
    }
    readGood(type(types));
}

TEST(Reader, NestingAndSizeMayReachTheirLimits)
{
    const QByteArray nested = "{ \"labels\": " + QByteArray(kMaxNesting - 1, '[') +
                              QByteArray(kMaxNesting - 1, ']') + " }";
    EXPECT_THAT(refusal(nested), HasSubstr("labels[0]: must be an object, not a list"));
    EXPECT_THAT(refusal("{ \"labels\": " + QByteArray(kMaxNesting, '[') +
                        QByteArray(kMaxNesting, ']') + " }"),
                HasSubstr("nested deeper than 32 levels"));
    readGood(QByteArray("{}").leftJustified(static_cast<int>(kMaxFileBytes), ' '));
}

TEST(Reader, FilesAreReadOrNamed)
{
    const test::TemporaryFolder folder;
    const QString good = QString::fromStdString(folder.writeFile("good.json", kPlant));
    EXPECT_TRUE(readProjectFile(good).project.has_value());
    const QString missing = QString::fromStdString(folder.pathOf("missing.json"));
    EXPECT_EQ(missing.toStdString() + ": cannot be read: No such file or directory",
              readProjectFile(missing).error.toStdString());
    EXPECT_THAT(readProjectFile(QString::fromStdString(folder.path())).error.toStdString(),
                HasSubstr("cannot be read: "));
    EXPECT_THAT(readProjectFile("/dev/zero").error.toStdString(), HasSubstr("larger than"));
}

} // namespace tavmir::project
