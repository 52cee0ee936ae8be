// Parsing of address texts against the label table. Private.
#ifndef TAVMIR_ADDRESS_FUNC_CHECK_H
#define TAVMIR_ADDRESS_FUNC_CHECK_H

#include "tavmir_kx_tcp/host_interface.h"

#include <QtCore/QStringList>

// What an address text resolves to. The parser sets only what the path through the label
// tree gives; the caller hands in a record of zeros.
struct ControlInformationM {
    quint8 dataType;       // 1, 4, 6, 7, 10; 0: a structure, or a type that cannot be read
    qint32 elementAddress; // in bits
    qint32 elementWidth;   // bits from one element to the next; for texts as the tree says
    qint32 bitAccess;      // 1: the text names one bit
    qint32 bitIndex;       // its number, unchecked
    qint32 isArrayElement; // 1: an indexed array element
    qint32 arrayBase;      // 0
    qint32 arrayIndex;     // linear index, row-major
    qint32 elementLimit;   // high minus low bound of the last dimension

    ControlInformationM()
        : dataType(0), elementAddress(0), elementWidth(0), bitAccess(0), bitIndex(0),
          isArrayElement(0), arrayBase(0), arrayIndex(0), elementLimit(0)
    {
    }
};

// Result codes of parsing.
enum AddressResult {
    kAddressResolved = 0,
    kAddressRefused = 1, // no such variable, index count, index on a non-array, no part left
    kLabelNotFound = 2,
    kIndexRefused = 3,
    kAddressEmpty = 6,
    kMemberNotFound = 7,
    kLabelWithoutVariables = 10,
    kAddressTooShort = 11,
    kStructureSizeMissing = 12
};

// All of these: any thread, no lock; they read `labelTable` only.

// Resolves `address`. `info` must come in zeroed; after a result other than 0 it is to be
// ignored.
TAVMIR_KX_TCP_EXPORT int get_label_address_info(const QString& address,
                                                ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW;

// Resolves `parts` from `partIndex` on against `entry`; calls itself for members.
TAVMIR_KX_TCP_EXPORT int get_label_address_1(const Label_Type_Info& entry, const QStringList& parts,
                                             int partIndex,
                                             ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW;

// Reads a bit suffix in the part behind `partIndex`, when that is the last one.
TAVMIR_KX_TCP_EXPORT void get_label_address_2(const Label_Type_Info& entry,
                                              const QStringList& parts, int partIndex,
                                              ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW;

// Turns "1,2" into a linear index. Results 0, 1 (number of indices, bounds missing), 3 (not a
// number, below a low bound); on 1 and 3 `index` and `end` are not written.
//   end  index plus the size of the last dimension
TAVMIR_KX_TCP_EXPORT int
get_label_address_array_memory_index(QString indexText, int dimensionCount,
                                     const QList<int>& arrayBounds, unsigned int& index,
                                     unsigned int* end) TAVMIR_KX_TCP_NOTHROW;

// Always 0; exported.
TAVMIR_KX_TCP_EXPORT int get_label_address_query(const QStringList& parts,
                                                 int partIndex) TAVMIR_KX_TCP_NOTHROW;

#endif
