// Checksums and hexadecimal digits.
#include "data/checksums.h"

#include "support/records.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

using namespace tavmir::test;

namespace
{

typedef unsigned short (*Checksum)(unsigned char*, unsigned short);

unsigned short over(Checksum checksum, const char* digits)
{
    QByteArray bytes = hex(digits);
    return checksum(reinterpret_cast<unsigned char*>(bytes.data()),
                    static_cast<unsigned short>(bytes.size()));
}

const char* const kNineDigits = "31 32 33 34 35 36 37 38 39";

TEST(Checksums, Sum)
{
    EXPECT_EQ(over(CalSUM, kNineDigits), 0x01DD);
    EXPECT_EQ(over(CalSUM, "FF"), 255);
    EXPECT_EQ(over(CalSUM, "FF 01"), 256);
    EXPECT_EQ(over(CalSUM, ""), 0);
}

TEST(Checksums, SumIsCutTo16Bits)
{
    std::vector<unsigned char> bytes(65535, 0xFF);
    EXPECT_EQ(CalSUM(bytes.data(), 65535), (65535u * 255u) % 65536u);
}

TEST(Checksums, Crc)
{
    EXPECT_EQ(over(CalCRC, kNineDigits), 0x4B37);
    EXPECT_EQ(over(CalCRC, "01 03 00 00 00 01"), 0x0A84);
    EXPECT_EQ(over(CalCRC, ""), 0xFFFF);
    EXPECT_EQ(over(CalCRC, "00"), 0x40BF);
    EXPECT_EQ(over(CalCRC, "FF FF"), 0x0000);
}

TEST(Checksums, LrcIsOneTo256)
{
    EXPECT_EQ(over(CalLRC, kNineDigits), 35);
    EXPECT_EQ(over(CalLRC, "80 80"), 256);
    EXPECT_EQ(over(CalLRC, "00"), 256);
    EXPECT_EQ(over(CalLRC, "01"), 255);
    EXPECT_EQ(over(CalLRC, "FF"), 1);
    EXPECT_EQ(over(CalLRC, ""), 256);
    std::vector<unsigned char> bytes(65535, 0xFF);
    EXPECT_EQ(CalLRC(bytes.data(), 65535), 255) << "the sum ends in 01";
}

TEST(Checksums, Xor)
{
    EXPECT_EQ(over(CalXOR, kNineDigits), 0x31);
    EXPECT_EQ(over(CalXOR, "F0 0F 55"), 0xAA);
    EXPECT_EQ(over(CalXOR, "A5"), 0xA5);
}

TEST(Checksums, XorReadsTheFirstByteWhateverTheLength)
{
    unsigned char bytes[2] = {0xA5, 0xFF};
    EXPECT_EQ(CalXOR(bytes, 0), 0xA5);
    EXPECT_EQ(CalXOR(bytes, 1), 0xA5);
    EXPECT_EQ(CalXOR(bytes, 2), 0x5A);
}

TEST(Checksums, LeaveTheBytesAlone)
{
    for (const Checksum checksum : {CalSUM, CalCRC, CalLRC, CalXOR}) {
        unsigned char bytes[3] = {1, 2, 3};
        checksum(bytes, 3);
        EXPECT_EQ(bytes[0], 1);
        EXPECT_EQ(bytes[1], 2);
        EXPECT_EQ(bytes[2], 3);
    }
}

TEST(Digits, ToAscii)
{
    const char* const digits = "0123456789ABCDEF";
    for (int digit = 0; digit < 16; ++digit) {
        EXPECT_EQ(DigitalToASCII(digit), digits[digit]);
    }
}

TEST(Digits, ToAsciiChecksNoRange)
{
    EXPECT_EQ(DigitalToASCII(16), 'G');
    EXPECT_EQ(DigitalToASCII(-1), 47);
    EXPECT_EQ(DigitalToASCII(-48), 0);
    EXPECT_EQ(DigitalToASCII(200), 255);
    EXPECT_EQ(DigitalToASCII(INT_MIN), INT_MIN + 48);
    EXPECT_EQ(DigitalToASCII(INT_MAX), INT_MIN + 54) << "wraps";
}

TEST(Digits, FromAscii)
{
    const char* const digits = "0123456789ABCDEF";
    for (int digit = 0; digit < 16; ++digit) {
        EXPECT_EQ(ASCIIToDigital(digits[digit]), digit);
    }
}

TEST(Digits, FromAsciiOfWhatIsNoDigit)
{
    EXPECT_EQ(ASCIIToDigital('/'), 0);
    EXPECT_EQ(ASCIIToDigital(' '), 0);
    EXPECT_EQ(ASCIIToDigital(0), 0);
    EXPECT_EQ(ASCIIToDigital(-1), 0);
    EXPECT_EQ(ASCIIToDigital(INT_MIN), 0);
    EXPECT_EQ(ASCIIToDigital(':'), 10);
    EXPECT_EQ(ASCIIToDigital('?'), 15);
    EXPECT_EQ(ASCIIToDigital('@'), 0);
    EXPECT_EQ(ASCIIToDigital('G'), 16);
    EXPECT_EQ(ASCIIToDigital('a'), 42);
    EXPECT_EQ(ASCIIToDigital('f'), 47);
    EXPECT_EQ(ASCIIToDigital(INT_MAX), INT_MAX - 55);
}

} // namespace
