// An address text as one element, with the driver's result code for it.
#include "address_resolver.h"

#include "address_walk.h"

namespace tavmir::project
{

int wireElementCount(const Element& element)
{
    return element.type == DataType::text ? element.words : 1;
}

int wireElementBits(const Element& element)
{
    if (element.type == DataType::bit) {
        return 1;
    }
    return element.type == DataType::dword || element.type == DataType::real ? 32 : 16;
}

int memoryBits(const Element& element)
{
    return element.bitNumber ? 1 : wireElementBits(element) * wireElementCount(element);
}

int driverCount(const Element& element)
{
    if (element.isBit()) {
        return 1;
    }
    if (element.type == DataType::text) {
        return element.words;
    }
    return element.type == DataType::word ? 1 : 2;
}

QString driverCodeInWords(int code)
{
    switch (code) {
    case 0:
        return "resolved";
    case 1:
        return "no such variable, or an index that does not belong";
    case 2:
        return "no such label";
    case 3:
        return "an index that is no number or below its low bound";
    case 6:
        return "empty address";
    case 7:
        return "no such member";
    case 10:
        return "label without variables";
    case 11:
        return "fewer than two parts";
    case 12:
        return "array of structures without a structure size";
    default:
        return QString("result %1").arg(code);
    }
}

Resolution resolveAddress(const Project& project, const QString& address)
{
    const AddressWalk walk = walkAddress(project, address);
    Resolution resolution;
    resolution.driverCode = walk.driverCode;
    resolution.problem = walk.problem;
    if (!walk.problem.isEmpty()) {
        return resolution;
    }
    const Variable& variable = *walk.variable;
    if (variable.type == DataType::structure) {
        resolution.problem = QString("%1 is a whole structure").arg(address);
        return resolution;
    }
    quint32 place = walk.base;
    if (variable.array) {
        place += arrayStride(project, variable) * linearIndex(*variable.array, walk.indices);
    }
    resolution.ok = true;
    resolution.element = makeElement(variable, place, address);
    resolution.element.bitNumber = walk.bitNumber;
    return resolution;
}

} // namespace tavmir::project
