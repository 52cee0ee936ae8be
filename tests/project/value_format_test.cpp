// Values between texts and bytes.
#include "project/value_format.h"

#include "test_project.h"

namespace tavmir::project
{

namespace
{

class Values : public testing::Test
{
protected:
    Element element(const char* address) const
    {
        const Resolution resolution = resolveAddress(project_, address);
        EXPECT_TRUE(resolution.ok);
        return resolution.element;
    }

    std::string bytes(const char* address, Format format, const QString& text) const
    {
        const EncodedValue encoded = encodeValue(element(address), format, text);
        EXPECT_TRUE(encoded.ok) << encoded.problem.toStdString();
        return encoded.bytes.toHex().toStdString();
    }

    std::string refused(const char* address, Format format, const QString& text) const
    {
        const EncodedValue encoded = encodeValue(element(address), format, text);
        EXPECT_FALSE(encoded.ok) << text.toStdString();
        return encoded.problem.toStdString();
    }

    std::string shown(const char* address, Format format, const char* hex) const
    {
        return decodeValue(element(address), format, QByteArray::fromHex(hex)).toStdString();
    }

    const Project project_ = plant();
};

} // namespace

TEST_F(Values, LeastSignificantByteComesFirst)
{
    EXPECT_EQ("3412", bytes("Main.W", Format::hex, "1234"));
    EXPECT_EQ("78563412", bytes("Main.D", Format::hex, "0x12345678"));
    EXPECT_EQ("4660", shown("Main.W", Format::unsignedNumber, "3412"));
    EXPECT_EQ("0x12345678", shown("Main.D", Format::hex, "78563412"));
}

TEST_F(Values, BitsAreZeroOrOne)
{
    EXPECT_EQ("01", bytes("Main.Run", Format::bit, "1"));
    EXPECT_EQ("00", bytes("Main.W.b[3]", Format::automatic, "0"));
    EXPECT_EQ("1", shown("Main.W.b[3]", Format::bit, "01"));
    EXPECT_EQ("1", shown("Main.Run", Format::automatic, "05"));
    EXPECT_EQ("0", shown("Main.Run", Format::bit, ""));
    EXPECT_EQ("\"2\" is not a value of Main.Run: bit, 0 or 1",
              refused("Main.Run", Format::bit, "2"));
    EXPECT_EQ("\"true\" is not a value of Main.Run: bit, 0 or 1",
              refused("Main.Run", Format::automatic, "true"));
}

TEST_F(Values, NumbersKeepToTheirRange)
{
    EXPECT_EQ("0080", bytes("Main.W", Format::signedNumber, "-32768"));
    EXPECT_EQ("ff7f", bytes("Main.W", Format::signedNumber, "32767"));
    EXPECT_EQ("\"32768\" is not a value of Main.W: signed, -32768 to 32767",
              refused("Main.W", Format::signedNumber, "32768"));
    EXPECT_EQ("\"-32769\" is not a value of Main.W: signed, -32768 to 32767",
              refused("Main.W", Format::signedNumber, "-32769"));
    EXPECT_EQ("ffff", bytes("Main.W", Format::unsignedNumber, "65535"));
    EXPECT_EQ("\"65536\" is not a value of Main.W: unsigned, 0 to 65535",
              refused("Main.W", Format::unsignedNumber, "65536"));
    EXPECT_EQ("\"-1\" is not a value of Main.W: unsigned, 0 to 65535",
              refused("Main.W", Format::unsignedNumber, "-1"));
    EXPECT_EQ("\"10000\" is not a value of Main.W: hex, 0x0000 to 0xFFFF",
              refused("Main.W", Format::hex, "10000"));
    EXPECT_EQ("00000080", bytes("Main.D", Format::signedNumber, "-2147483648"));
    EXPECT_EQ("ffffffff", bytes("Main.D", Format::unsignedNumber, "4294967295"));
    EXPECT_EQ("\"4294967296\" is not a value of Main.D: unsigned, 0 to 4294967295",
              refused("Main.D", Format::unsignedNumber, "4294967296"));
}

TEST_F(Values, AutomaticTakesSignedUnsignedAndHex)
{
    EXPECT_EQ("ffff", bytes("Main.W", Format::automatic, "-1"));
    EXPECT_EQ("ffff", bytes("Main.W", Format::automatic, "65535"));
    EXPECT_EQ("1f00", bytes("Main.W", Format::automatic, "0x1F"));
    EXPECT_EQ("\"65536\" is not a value of Main.W: signed or unsigned, -32768 to 65535",
              refused("Main.W", Format::automatic, "65536"));
    EXPECT_EQ("\"0x10000\" is not a value of Main.W: signed or unsigned, -32768 to 65535",
              refused("Main.W", Format::automatic, "0x10000"));
}

TEST_F(Values, WhatIsNoNumberIsRefused)
{
    for (const char* text : {"", " ", "x", "1.5", "1e3", "0x", "--1", "99999999999999999999"}) {
        refused("Main.W", Format::automatic, text);
        refused("Main.W", Format::signedNumber, text);
    }
    EXPECT_EQ("\"0x-1\" is not a value of Main.W: hex, 0x0000 to 0xFFFF",
              refused("Main.W", Format::hex, "0x-1"));
    EXPECT_EQ("\"12G\" is not a value of Main.W: hex, 0x0000 to 0xFFFF",
              refused("Main.W", Format::hex, "12G"));
    EXPECT_EQ("\"0x12\" is not a value of Main.W: signed, -32768 to 32767",
              refused("Main.W", Format::signedNumber, "0x12"));
}

TEST_F(Values, SignedNumbersAreShownWithTheirSign)
{
    EXPECT_EQ("-1", shown("Main.W", Format::signedNumber, "ffff"));
    EXPECT_EQ("65535", shown("Main.W", Format::unsignedNumber, "ffff"));
    EXPECT_EQ("-2147483648", shown("Main.D", Format::signedNumber, "00000080"));
    EXPECT_EQ("0x00FF", shown("Main.W", Format::hex, "ff00"));
}

TEST_F(Values, FloatsComeBackExactly)
{
    EXPECT_EQ("0000c03f", bytes("Main.Temp", Format::floating, "1.5"));
    EXPECT_EQ("0000c0bf", bytes("Main.Temp", Format::automatic, "-1.5"));
    EXPECT_EQ("0000c03f", bytes("Main.D", Format::floating, "1.5"));
    EXPECT_EQ("1.5", shown("Main.Temp", Format::floating, "0000c03f"));
    EXPECT_EQ("0.1", shown("Main.Temp", Format::automatic, "cdcccc3d"));
    EXPECT_EQ("0x3FC00000", shown("Main.Temp", Format::hex, "0000c03f"));
    for (const quint32 bits : {0x00000001u, 0x3dccccceu, 0x7f7fffffu, 0x4b800001u, 0xc2f6e979u}) {
        QByteArray value(4, '\0');
        for (int i = 0; i < 4; ++i) {
            value[i] = static_cast<char>(bits >> (8 * i) & 0xFF);
        }
        const QString text = decodeValue(element("Main.Temp"), Format::floating, value);
        EXPECT_EQ(value.toHex().toStdString(), bytes("Main.Temp", Format::floating, text));
    }
}

TEST_F(Values, FloatsOutsideTheirRangeAreRefused)
{
    EXPECT_EQ("\"1e39\" is not a value of Main.Temp: float, -3.40282e+38 to 3.40282e+38",
              refused("Main.Temp", Format::floating, "1e39"));
    EXPECT_EQ("\"nan\" is not a value of Main.Temp: float, -3.40282e+38 to 3.40282e+38",
              refused("Main.Temp", Format::floating, "nan"));
    EXPECT_EQ("\"inf\" is not a value of Main.Temp: float, -3.40282e+38 to 3.40282e+38",
              refused("Main.Temp", Format::floating, "inf"));
    EXPECT_EQ("\"1,5\" is not a value of Main.Temp: float, -3.40282e+38 to 3.40282e+38",
              refused("Main.Temp", Format::floating, "1,5"));
}

TEST_F(Values, TextsFillTheirWordsFromTheLowByte)
{
    EXPECT_EQ("48690000000000000000000000000000", bytes("Main.Title", Format::text, "Hi"));
    EXPECT_EQ("Hi", shown("Main.Title", Format::text, "48690000000000000000000000000000"));
    EXPECT_EQ("A", shown("Main.Title", Format::automatic, "4100420000000000"));
    EXPECT_EQ("abcdefghijklmnop",
              shown("Main.Title", Format::text, "6162636465666768696a6b6c6d6e6f707172"));
    EXPECT_EQ("\"xxxxxxxxxxxxxxxxx\" is not a value of Main.Title: text, at most 16 characters "
              "from U+0001 to U+00FF",
              refused("Main.Title", Format::text, QString(17, 'x')));
    EXPECT_EQ(
        "\"€\" is not a value of Main.Title: text, at most 16 characters from U+0001 to U+00FF",
        refused("Main.Title", Format::text, QString(QChar(0x20AC))));
    EXPECT_EQ("\"\\u0000\" is not a value of Main.Title: text, at most 16 characters from U+0001 "
              "to U+00FF",
              refused("Main.Title", Format::text, QString(QChar(0))));
    EXPECT_EQ("e9", bytes("Main.Title", Format::text, QString(QChar(0xE9))).substr(0, 2));
}

TEST_F(Values, FormatsFitTheirTypesOnly)
{
    EXPECT_EQ("Main.W is not written as text: signed, unsigned or hex",
              refused("Main.W", Format::text, "a"));
    EXPECT_EQ("Main.Run is not written as signed: bit",
              refused("Main.Run", Format::signedNumber, "1"));
    EXPECT_EQ("Main.W is not written as float: signed, unsigned or hex",
              refused("Main.W", Format::floating, "1"));
    EXPECT_FALSE(formatFits(element("Main.Title"), Format::hex));
    EXPECT_FALSE(formatFits(element("Main.Temp"), Format::signedNumber));
    EXPECT_TRUE(formatFits(element("Main.D"), Format::floating));
    EXPECT_EQ(Format::floating, effectiveFormat(element("Main.Temp"), Format::signedNumber));
    EXPECT_EQ(Format::signedNumber, effectiveFormat(element("Main.D"), Format::signedNumber));
    EXPECT_EQ(Format::unsignedNumber, effectiveFormat(element("Main.D"), Format::automatic));
    EXPECT_EQ(Format::bit, effectiveFormat(element("Main.W.b[0]"), Format::hex));
    EXPECT_EQ(Format::text, effectiveFormat(element("Main.Title"), Format::automatic));
}

TEST_F(Values, AsShownNumbersAreDecimalOrPrefixed)
{
    const auto shown = [&](const char* address, Format format, const char* text) {
        const EncodedValue encoded = encodeShown(element(address), format, text);
        return encoded.ok ? encoded.bytes.toHex().toStdString() : encoded.problem.toStdString();
    };
    EXPECT_EQ("1000", shown("Main.W", Format::hex, "16"));
    EXPECT_EQ("1600", shown("Main.W", Format::hex, "0x16"));
    EXPECT_EQ("\"0x10000\" is not a value of Main.W: hex, 0x0000 to 0xFFFF",
              shown("Main.W", Format::hex, "0x10000"));
    EXPECT_EQ("\"1A\" is not a value of Main.W: hex, 0x0000 to 0xFFFF",
              shown("Main.W", Format::hex, "1A"));
    EXPECT_EQ("1600", shown("Main.W", Format::signedNumber, "0x16"));
    EXPECT_EQ("\"0xFFFF\" is not a value of Main.W: signed, -32768 to 32767",
              shown("Main.W", Format::signedNumber, "0xFFFF"));
    EXPECT_EQ("\"-1\" is not a value of Main.W: unsigned, 0 to 65535",
              shown("Main.W", Format::unsignedNumber, "-1"));
    EXPECT_EQ("0000a041", shown("Main.D", Format::floating, "20"));
    EXPECT_EQ("01", shown("Main.W.b[3]", Format::hex, "1")) << "one bit of it";
}

TEST_F(Values, BitsOfAFloatAreWrittenWithTheirPrefixOnly)
{
    EXPECT_EQ(
        "0000a041",
        encodeShown(element("Main.Temp"), Format::hex, "0x41A00000").bytes.toHex().toStdString());
    EXPECT_EQ("\"20\" is not a value of Main.Temp: hex, 0x00000000 to 0xFFFFFFFF",
              encodeShown(element("Main.Temp"), Format::hex, "20").problem.toStdString());
}

TEST_F(Values, ADeclaredFormatIsTheElements)
{
    Element word = element("Main.W");
    word.format = Format::signedNumber;
    EXPECT_EQ(Format::signedNumber, effectiveFormat(word, Format::automatic));
    EXPECT_EQ(Format::hex, effectiveFormat(word, Format::hex)) << "asked for another";
    EXPECT_EQ(Format::signedNumber, effectiveFormat(word, Format::floating))
        << "which does not fit";
    EXPECT_EQ("-1", decodeValue(word, Format::automatic, "\xff\xff").toStdString());
    EXPECT_EQ("\"32768\" is not a value of Main.W: signed, -32768 to 32767",
              encodeValue(word, Format::automatic, "32768").problem.toStdString());
    EXPECT_EQ(32767.0, numberRange(word).high);
    word.format = Format::unsignedNumber;
    EXPECT_EQ(0.0, numberRange(word).low);
    Element bit = element("Main.W.b[3]");
    bit.format = Format::hex;
    EXPECT_EQ(Format::bit, effectiveFormat(bit, Format::automatic));
    EXPECT_EQ("01", encodeValue(bit, Format::automatic, "1").bytes.toHex().toStdString());
    Element dword = element("Main.D");
    dword.format = Format::floating;
    EXPECT_EQ("0000a441",
              encodeValue(dword, Format::automatic, "20.5").bytes.toHex().toStdString());
    EXPECT_EQ("0000c03f", encodeNumber(dword, 1.5).toHex().toStdString());
    EXPECT_LT(1e38, numberRange(dword).high);
}

TEST_F(Values, FormatsThatFitAreNamed)
{
    EXPECT_EQ("bit", fittingFormats(element("Main.Run")).toStdString());
    EXPECT_EQ("signed, unsigned, hex or float", fittingFormats(element("Main.D")).toStdString());
    EXPECT_EQ("hex or float", fittingFormats(element("Main.Temp")).toStdString());
}

TEST_F(Values, FormatNamesGoBothWays)
{
    for (const char* name : {"bit", "signed", "unsigned", "hex", "float", "text"}) {
        ASSERT_TRUE(formatFromName(name).has_value()) << name;
        EXPECT_EQ(name, formatName(*formatFromName(name)).toStdString());
    }
    EXPECT_FALSE(formatFromName("Bit").has_value());
    EXPECT_EQ("automatic", formatName(Format::automatic).toStdString());
}

TEST_F(Values, NumbersBecomeBytesOfTheElement)
{
    EXPECT_EQ("feff", encodeNumber(element("Main.W"), -1.6).toHex().toStdString());
    EXPECT_EQ("ffffffff", encodeNumber(element("Main.D"), 4294967295.0).toHex().toStdString());
    EXPECT_EQ("0000c03f", encodeNumber(element("Main.Temp"), 1.5).toHex().toStdString());
    EXPECT_EQ("01", encodeNumber(element("Main.Run"), 0.7).toHex().toStdString());
    EXPECT_EQ("ffff", encodeNumber(element("Main.W"), 1e9).toHex().toStdString());
    EXPECT_EQ(-32768.0, numberRange(element("Main.W")).low);
    EXPECT_EQ(1.0, numberRange(element("Main.W.b[2]")).high);
    EXPECT_EQ(4294967295.0, numberRange(element("Main.D")).high);
    EXPECT_EQ(0.0, numberRange(element("Main.Title")).high);
}

TEST(ValueNumber, IsTheNumberBehindTheText)
{
    Element word;
    const auto number = [&](Format format, const char* hex) {
        return decodeNumber(word, format, QByteArray::fromHex(hex));
    };
    EXPECT_EQ(-2, number(Format::signedNumber, "feff"));
    EXPECT_EQ(65534, number(Format::unsignedNumber, "feff"));
    EXPECT_EQ(65534, number(Format::hex, "feff"));
    word.type = DataType::dword;
    EXPECT_EQ(-2, number(Format::signedNumber, "feffffff"));
    word.bitNumber = 3;
    EXPECT_EQ(1, number(Format::bit, "01"));
    word.bitNumber.reset();
    word.type = DataType::real;
    EXPECT_EQ(1.5, number(Format::floating, "0000c03f"));
    EXPECT_EQ(std::nullopt, number(Format::floating, "0000807f")) << "no finite number";
    word.type = DataType::text;
    word.words = 1;
    EXPECT_EQ(std::nullopt, number(Format::text, "3132"));
}

} // namespace tavmir::project
