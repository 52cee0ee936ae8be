// Checksums and hexadecimal digits, offered to hosts by their C++ names; the driver itself
// uses none. Any thread, no lock. Private.
#ifndef TAVMIR_DATA_CHECKSUMS_H
#define TAVMIR_DATA_CHECKSUMS_H

#include "tavmir_kx_tcp/host_interface.h"

//   data    `length` readable bytes
// Sum of all bytes, cut to 16 bits.
TAVMIR_KX_TCP_EXPORT unsigned short CalSUM(unsigned char* data,
                                           unsigned short length) TAVMIR_KX_TCP_NOTHROW;

// CRC-16 of Modbus RTU; 0xFFFF for no bytes.
TAVMIR_KX_TCP_EXPORT unsigned short CalCRC(unsigned char* data,
                                           unsigned short length) TAVMIR_KX_TCP_NOTHROW;

// Two's complement of the byte sum, 1 to 256: 256 where its low byte is 0.
TAVMIR_KX_TCP_EXPORT unsigned short CalLRC(unsigned char* data,
                                           unsigned short length) TAVMIR_KX_TCP_NOTHROW;

// Exclusive or of all bytes. The first byte is read whatever `length` is.
TAVMIR_KX_TCP_EXPORT unsigned short CalXOR(unsigned char* data,
                                           unsigned short length) TAVMIR_KX_TCP_NOTHROW;

// 0..15 to '0'..'9', 'A'..'F'; no range check.
TAVMIR_KX_TCP_EXPORT int DigitalToASCII(int digit) TAVMIR_KX_TCP_NOTHROW;

// '0'..'9', 'A'..'F' to 0..15; only upper-case digits are converted right.
TAVMIR_KX_TCP_EXPORT int ASCIIToDigital(int character) TAVMIR_KX_TCP_NOTHROW;

#endif
