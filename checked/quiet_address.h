// Resolving an address text without a diagnostic line. Private.
#ifndef TAVMIR_CHECKED_QUIET_ADDRESS_H
#define TAVMIR_CHECKED_QUIET_ADDRESS_H

#include "address/Func_Check.h"

// As `get_label_address_info`, but silent.
int tavmir_quiet_address_info(const QString& address,
                              ControlInformationM& info) TAVMIR_KX_TCP_NOTHROW;

#endif
