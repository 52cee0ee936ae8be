// Texts of a controller as JSON.
#include "page/json_writer.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <gtest/gtest.h>

#include <limits>

namespace tavmir::host
{

namespace
{

std::string textOf(const QString& text)
{
    std::string out;
    appendJsonText(out, text);
    return out;
}

// What a reader makes of it.
QString readAgain(const QString& text)
{
    const std::string json = "[" + textOf(text) + "]";
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(json), &error);
    EXPECT_EQ(QJsonParseError::NoError, error.error) << json;
    return document.array().first().toString();
}

} // namespace

TEST(JsonText, IsReadAgainAsItWas)
{
    for (const QString& text :
         {QString(""), QString("plain"), QString("\"quoted\" \\ / </script>"), QString("– é ß 漢"),
          QString::fromUtf8("\xF0\x9F\x98\x80"), QString(QChar(0)) + "behind a zero",
          QString("\t\r\n\b\f\x1F\x7F"), QString(QChar(0x2028)) + QChar(0x2029)}) {
        EXPECT_EQ(text.toStdString(), readAgain(text).toStdString());
    }
}

TEST(JsonText, EachCharacterIsReadAgain)
{
    for (uint code = 0; code < 0xD800; ++code) {
        ASSERT_EQ(QString(QChar(code)), readAgain(QString(QChar(code)))) << code;
    }
}

TEST(JsonText, WhatCouldEndALineOrATextIsEscaped)
{
    EXPECT_EQ(R"("\u0000\u001f\u007f\u2028\u2029\"\\")",
              textOf(QString(QChar(0)) + QChar(0x1F) + QChar(0x7F) + QChar(0x2028) + QChar(0x2029) +
                     "\"\\"));
}

TEST(JsonText, HalfOfAPairIsReplaced)
{
    const QString replaced = QString::fromUtf8("\xEF\xBF\xBD");
    EXPECT_EQ(replaced, readAgain(QString(QChar(0xD83D))));
    EXPECT_EQ(replaced + "x", readAgain(QString(QChar(0xDE00)) + "x"));
    EXPECT_EQ(replaced + replaced, readAgain(QString(QChar(0xD83D)) + QChar(0xD83D)));
}

TEST(JsonWriter, SeparatesWhatStandsBesideEachOther)
{
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("a").beginArray().whole(1).null().boolean(true).endArray();
    json.key("b").beginObject().endObject().key("c").text("x").endObject();
    EXPECT_EQ(R"({"a":[1,null,true],"b":{},"c":"x"})", out);
}

TEST(JsonWriter, NumbersComeBackExactlyAndNoneIsNull)
{
    std::string out;
    JsonWriter json(out);
    json.beginArray().number(0.1).number(-4294967295.0).number(1795341349352.342);
    json.number(std::numeric_limits<double>::infinity()).number(std::nullopt).endArray();
    EXPECT_EQ("[0.1,-4294967295,1795341349352.342,null,null]", out);
}

} // namespace tavmir::host
