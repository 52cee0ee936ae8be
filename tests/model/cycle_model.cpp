// Choosing requests, judging answers, ending turns.
#include "model/driver_model.h"

#include <algorithm>
#include <utility>

namespace tavmir::model
{

namespace
{

constexpr int kTurnsInARow = 4; // counted before the turn: the fifth is still taken
constexpr int kBudget = 230;

} // namespace

void DriverModel::formBatch(const VarList& list)
{
    batch.assign(1, list.front());
    const int size = sizeOfType(list.front().dataType);
    int total = 2 * size;
    for (std::size_t i = 1; i < list.size() && total < kBudget; ++i) {
        total += size;
        if (list[i].dataType != list.front().dataType) {
            return;
        }
        batch.push_back(list[i]);
    }
}

const Request* DriverModel::comCommunication()
{
    if (!protocolList.empty()) {
        return &protocolList.front();
    }
    if (!pendingReadList.empty()) {
        readVarList = pendingReadList;
        pendingReadList.clear();
    }
    batch.clear();
    while (!writeVarList.empty() && writeTurns <= kTurnsInARow) {
        formBatch(writeVarList);
        if (writeRegister()) {
            cycleState = 1;
            ++writeTurns;
            return &protocolList.front();
        }
        writeVarList.erase(writeVarList.begin(),
                           writeVarList.begin() + static_cast<std::ptrdiff_t>(batch.size()));
        batch.clear();
    }
    if (!onceReadList.empty() && onceReadTurns <= kTurnsInARow) {
        formBatch(onceReadList);
        readRegister();
        cycleState = 2;
        ++onceReadTurns;
        return &protocolList.front();
    }
    if (!readVarList.empty()) {
        readVarList.front().status = -1;
        formBatch(readVarList);
        readRegister();
        cycleState = 0;
        writeTurns = 0;
        onceReadTurns = 0;
        return &protocolList.front();
    }
    writeTurns = 0;
    onceReadTurns = 0;
    com[ScanDone] = 1;
    return nullptr;
}

void DriverModel::dataCom(const Bytes& reply, int received)
{
    retVar.status = 1;
    if (protocolList.empty()) {
        return;
    }
    const int result = checkLocal(reply, received);
    if (result == 1 || result == 100) {
        commFailed = false;
        com[ReplyCount] = wrapped(std::int64_t{com[ReplyCount]} + 1);
        const bool ends = com[ReplyCount] >= com[ReplyQuota];
        if (ends && com[ScanDone] == 0) {
            ++scanCount;
            if (scanCount > static_cast<std::int64_t>(readVarList.size())) {
                scanCount = 0;
                com[ScanDone] = 1;
            }
        }
        protocolList.pop_front();
        if (!ends) {
            retVar.status = result;
            return;
        }
    } else {
        const char* const file = "Communication_Protocol";
        emit(line(file, "DataCom", 547, "ERROR ").quotedHex(protocolList.front().frame));
        emit(line(file, "DataCom", 548, "ERROR ").quotedHex(reply));
        com[RetryCount] = wrapped(std::int64_t{com[RetryCount]} + 1);
        if (com[RetryCount] <= com[RetryLimit]) {
            retVar.status = 0;
            return;
        }
        commFailed = true;
        scanCount = 0;
        com[ScanDone] = 0;
        com[RetryCount] = 0;
        protocolList.clear();
    }
    endTurn();
    retVar.status = result;
}

void DriverModel::endTurn()
{
    if (cycleState == 1) {
        finishVariables(writeVarList);
    }
    if (cycleState == 2) {
        finishVariables(onceReadList);
    }
    if (cycleState == 0 && !readVarList.empty() && readVarList.front().status == -1) {
        readVarList.front().status = 0;
        retVar = readVarList.front();
        retVar.value.clear();
        for (std::size_t i = 0; i < batch.size(); ++i) {
            readVarList.push_back(readVarList.front());
            readVarList.pop_front();
        }
    }
    if (!commFailed) {
        return;
    }
    if (hasCommFailCallback) {
        report(Event::CommFail, {0, retVar.hostKey, 1, 0});
    }
    if (cycleState == 1) {
        writeVarList.clear();
    }
    if (cycleState == 2) {
        onceReadList.clear();
    }
}

void DriverModel::finishVariables(VarList& list)
{
    using Key = std::pair<std::int32_t, std::int32_t>;
    const auto keyOf = [](const Var& var) { return Key(var.hostKey, var.varKey); };

    const std::size_t covered = std::min(batch.size(), list.size());
    std::vector<Key> finished;
    for (std::size_t i = 0; i < covered; ++i) {
        finished.push_back(keyOf(list.front()));
        list.pop_front();
    }
    std::vector<Key> pairs;
    while (!finished.empty()) {
        const Key key = finished.back();
        pairs.push_back(key);
        finished.erase(std::remove(finished.begin(), finished.end(), key), finished.end());
    }
    for (const Key& key : pairs) {
        const bool waiting = std::any_of(list.begin(), list.end(),
                                         [&](const Var& var) { return keyOf(var) == key; });
        if (!hasVarDoneCallback || (!commFailed && waiting)) {
            continue;
        }
        report(Event::VarDone, {com[ComStation], key.first, key.second, commFailed ? 2 : 1});
    }
}

} // namespace tavmir::model
