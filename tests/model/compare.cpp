// What the driver holds against what the model says.
#include "model/qt_side.h"

#include <algorithm>
#include <cstring>

namespace tavmir::model
{

namespace
{

bool same(const Text& expected, const QString& actual)
{
    return expected.size() == static_cast<std::size_t>(actual.size()) &&
           (expected.empty() ||
            std::memcmp(expected.data(), actual.constData(), 2 * expected.size()) == 0);
}

bool same(const Bytes& expected, const QByteArray& actual)
{
    return expected.size() == static_cast<std::size_t>(actual.size()) &&
           (expected.empty() ||
            std::memcmp(expected.data(), actual.constData(), expected.size()) == 0);
}

std::string differs(const char* name, std::int64_t expected, std::int64_t actual)
{
    return std::string(name) + ": expected " + std::to_string(expected) + ", driver has " +
           std::to_string(actual);
}

#define RETURN_DIFFERENCE(member)                                                                  \
    if (expected.member != actual.member)                                                          \
    return differs(#member, expected.member, actual.member)

std::string differenceOfLists(const char* name, const VarList& expected,
                              const QList<RW_VAR>& actual)
{
    if (expected.size() != static_cast<std::size_t>(actual.size())) {
        return differs((std::string(name) + ".size").c_str(),
                       static_cast<std::int64_t>(expected.size()), actual.size());
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const std::string difference =
            differenceOfVars(expected[i], actual.at(static_cast<int>(i)));
        if (!difference.empty()) {
            return std::string(name) + '[' + std::to_string(i) + "]." + difference;
        }
    }
    return std::string();
}

template <typename Expected, typename Actual>
std::string differenceOfCaches(const char* name, const std::map<std::int32_t, Expected>& expected,
                               const QHash<int, Actual>& actual)
{
    for (const auto& entry : expected) {
        const auto found = actual.constFind(entry.first);
        if (found == actual.constEnd()) {
            return std::string(name) + " lacks key " + std::to_string(entry.first);
        }
        if (found.value() != entry.second) {
            return differs((std::string(name) + '[' + std::to_string(entry.first) + ']').c_str(),
                           entry.second, found.value());
        }
    }
    if (expected.size() != static_cast<std::size_t>(actual.size())) {
        return differs((std::string(name) + ".size").c_str(),
                       static_cast<std::int64_t>(expected.size()), actual.size());
    }
    return std::string();
}

std::string differenceOfCounters(const DriverModel& expected, const Communication_Protocol& actual)
{
    RETURN_DIFFERENCE(cycleState);
    RETURN_DIFFERENCE(writeTurns);
    RETURN_DIFFERENCE(onceReadTurns);
    RETURN_DIFFERENCE(scanCount);
    RETURN_DIFFERENCE(commFailed);
    RETURN_DIFFERENCE(transactionCounter);
    if (static_cast<std::int64_t>(expected.batch.size()) != actual.batchCount) {
        return differs("batchCount", static_cast<std::int64_t>(expected.batch.size()),
                       actual.batchCount);
    }
    if (std::memcmp(expected.sendBuffer.data(), actual.sendBuffer, sizeof actual.sendBuffer) != 0) {
        return "sendBuffer";
    }
    return std::string();
}

// While a request is in flight its batch points at the head of the list it came from.
std::string differenceOfBatch(const DriverModel& model, const Communication_Protocol& driver)
{
    if (model.protocolList.empty()) {
        return std::string();
    }
    const QList<RW_VAR>& list = model.cycleState == 1   ? driver.writeVarList
                                : model.cycleState == 2 ? driver.onceReadList
                                                        : driver.readVarList;
    for (int i = 0; i < driver.batchCount; ++i) {
        if (i >= list.size() || driver.batchElements[i] != &list.at(i)) {
            return "batchElements[" + std::to_string(i) + "] does not point at the list's entry";
        }
        const std::string difference =
            differenceOfVars(model.batch[static_cast<std::size_t>(i)], list.at(i));
        if (!difference.empty()) {
            return "batch element " + std::to_string(i) + ": " + difference;
        }
    }
    return std::string();
}

std::string differenceOfStations(const DriverModel& model, const Communication_Protocol& driver)
{
    if (model.disabledStations.size() != static_cast<std::size_t>(driver.stationMap.size())) {
        return "stationMap.size";
    }
    for (const int station : model.disabledStations) {
        const auto found = driver.stationMap.constFind(station);
        if (found == driver.stationMap.constEnd() || found.value() != 0) {
            return "stationMap lacks " + std::to_string(station);
        }
    }
    return std::string();
}

std::string differenceOfWords(const DriverModel& model, const ComInfo& words)
{
    static_assert(sizeof(ComInfo) == 4 * ComWords, "one word each");
    for (std::size_t i = 0; i < ComWords; ++i) {
        std::int32_t word = 0;
        std::memcpy(&word, reinterpret_cast<const char*>(&words) + 4 * i, sizeof word);
        if (word != model.com[i]) {
            return differs(("ComInfo word " + std::to_string(i)).c_str(), model.com[i], word);
        }
    }
    return std::string();
}

} // namespace

std::string differenceOfVars(const Var& expected, const RW_VAR& actual)
{
    RETURN_DIFFERENCE(hostKey);
    RETURN_DIFFERENCE(varKey);
    RETURN_DIFFERENCE(hostData2);
    RETURN_DIFFERENCE(hostData3);
    RETURN_DIFFERENCE(hostData4);
    RETURN_DIFFERENCE(status);
    RETURN_DIFFERENCE(dataType);
    RETURN_DIFFERENCE(elementAddress);
    RETURN_DIFFERENCE(station);
    RETURN_DIFFERENCE(count);
    RETURN_DIFFERENCE(hostData12);
    RETURN_DIFFERENCE(hostData13);
    if (!same(expected.addressText, actual.addressText)) {
        return "addressText: expected " + shown(expected.addressText);
    }
    if (!same(expected.auxText, actual.auxText)) {
        return "auxText: expected " + shown(expected.auxText);
    }
    if (!same(expected.value, actual.value)) {
        return "value: expected " + shown(expected.value) + ", driver has " +
               shown(modelBytes(actual.value));
    }
    return std::string();
}

std::string differenceOfResolved(const Resolved& expected, const ControlInformationM& actual)
{
    RETURN_DIFFERENCE(dataType);
    RETURN_DIFFERENCE(elementAddress);
    RETURN_DIFFERENCE(elementWidth);
    RETURN_DIFFERENCE(bitAccess);
    RETURN_DIFFERENCE(bitIndex);
    RETURN_DIFFERENCE(isArrayElement);
    RETURN_DIFFERENCE(arrayBase);
    RETURN_DIFFERENCE(arrayIndex);
    RETURN_DIFFERENCE(elementLimit);
    return std::string();
}

bool sameLabel(const Label& expected, const Label_Type_Info& actual)
{
    const auto sameNumbers = [](const std::vector<std::int32_t>& a, const QList<int>& b) {
        return a.size() == static_cast<std::size_t>(b.size()) &&
               std::equal(a.begin(), a.end(), b.begin());
    };
    const auto sameTrees = [](const std::vector<Label>& a, const QList<Label_Type_Info>& b) {
        return a.size() == static_cast<std::size_t>(b.size()) &&
               std::equal(a.begin(), a.end(), b.begin(), sameLabel);
    };
    return same(expected.name, actual.name) && expected.typeFlags == actual.typeFlags &&
           expected.offset == actual.offset && expected.dimensionCount == actual.dimensionCount &&
           expected.memberCount == actual.memberCount &&
           sameNumbers(expected.arrayBounds, actual.arrayBounds) &&
           sameTrees(expected.members, actual.members) &&
           sameTrees(expected.elementType, actual.elementType) &&
           same(expected.extraText, actual.extraText) &&
           sameNumbers(expected.elementSizes, actual.elementSizes);
}

std::string differenceOfRequests(const Request& expected, const Protocol& actual)
{
    RETURN_DIFFERENCE(frameLength);
    RETURN_DIFFERENCE(replyLength);
    RETURN_DIFFERENCE(replyDataOffset);
    RETURN_DIFFERENCE(replyState);
    if (!same(expected.frame, actual.frame)) {
        return "frame: expected " + shown(expected.frame) + ", driver has " +
               shown(modelBytes(actual.frame));
    }
    return differenceOfVars(expected.var, actual.var);
}

std::string differenceOfState(const DriverModel& model, const Communication_Protocol& driver,
                              const ComInfo& words)
{
    if (model.protocolList.size() != static_cast<std::size_t>(driver.protocolList.size())) {
        return differs("protocolList.size", static_cast<std::int64_t>(model.protocolList.size()),
                       driver.protocolList.size());
    }
    for (std::size_t i = 0; i < model.protocolList.size(); ++i) {
        const std::string difference = differenceOfRequests(
            model.protocolList[i], driver.protocolList.at(static_cast<int>(i)));
        if (!difference.empty()) {
            return "protocolList[" + std::to_string(i) + "]." + difference;
        }
    }
    const std::string retVar = differenceOfVars(model.retVar, driver.retVar);
    const std::string differences[] = {
        differenceOfLists("readVarList", model.readVarList, driver.readVarList),
        differenceOfLists("pendingReadList", model.pendingReadList, driver.pendingReadList),
        differenceOfLists("writeVarList", model.writeVarList, driver.writeVarList),
        differenceOfLists("onceReadList", model.onceReadList, driver.onceReadList),
        differenceOfCounters(model, driver),
        differenceOfBatch(model, driver),
        retVar.empty() ? retVar : "retVar." + retVar,
        differenceOfWords(model, words),
        differenceOfCaches("byteCache", model.byteCache, driver.byteCache),
        differenceOfCaches("wordCache", model.wordCache, driver.wordCache),
        differenceOfCaches("dwordCache", model.dwordCache, driver.dwordCache),
        differenceOfStations(model, driver)};
    for (const std::string& difference : differences) {
        if (!difference.empty()) {
            return difference;
        }
    }
    const bool unusedListsEmpty = driver.auxVarList.isEmpty() && driver.extendVarList.isEmpty();
    return unusedListsEmpty ? std::string() : "auxVarList or extendVarList is not empty";
}

} // namespace tavmir::model
