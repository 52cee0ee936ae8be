#include "data/checksums.h"

#include "core/wrapping.h"

namespace
{

unsigned int byteSum(const unsigned char* data, unsigned short length)
{
    unsigned int sum = 0;
    for (unsigned int i = 0; i < length; ++i) {
        sum += data[i];
    }
    return sum;
}

} // namespace

unsigned short CalSUM(unsigned char* data, unsigned short length) TAVMIR_KX_TCP_NOTHROW
{
    return static_cast<unsigned short>(byteSum(data, length) & 0xFFFF);
}

unsigned short CalCRC(unsigned char* data, unsigned short length) TAVMIR_KX_TCP_NOTHROW
{
    unsigned int crc = 0xFFFF;
    for (unsigned int i = 0; i < length; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1) ? (crc >> 1) ^ 0xA001 : crc >> 1;
        }
    }
    return static_cast<unsigned short>(crc);
}

unsigned short CalLRC(unsigned char* data, unsigned short length) TAVMIR_KX_TCP_NOTHROW
{
    return static_cast<unsigned short>((~byteSum(data, length) & 0xFF) + 1);
}

unsigned short CalXOR(unsigned char* data, unsigned short length) TAVMIR_KX_TCP_NOTHROW
{
    unsigned int result = data[0];
    for (unsigned int i = 1; i < length; ++i) {
        result ^= data[i];
    }
    return static_cast<unsigned short>(result);
}

int DigitalToASCII(int digit) TAVMIR_KX_TCP_NOTHROW
{
    return digit <= 9 ? tavmir::wrapAdd(digit, '0') : tavmir::wrapAdd(digit, 'A' - 10);
}

int ASCIIToDigital(int character) TAVMIR_KX_TCP_NOTHROW
{
    if (character < '0' || character == '@') {
        return 0;
    }
    // ':' to '?' count on from '9'; only what lies above '@' counts as a letter.
    return character < '@' ? character - '0' : character - ('A' - 10);
}
