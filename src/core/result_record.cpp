#include "core/result_record.h"

void passRetValue(const RW_VAR& from, RW_VAR& to) TAVMIR_KX_TCP_NOTHROW
{
    to.hostKey = from.hostKey;
    to.varKey = from.varKey;
    to.hostData2 = from.hostData2;
    to.hostData3 = from.hostData3;
    to.hostData4 = from.hostData4;
    to.status = from.status;
    to.addressText = from.addressText;
    to.auxText = from.auxText;
    to.dataType = from.dataType;
    to.elementAddress = from.elementAddress;
    to.station = from.station;
    to.count = from.count;
    to.hostData12 = from.hostData12;
    to.hostData13 = from.hostData13;
    to.value.clear();
}
