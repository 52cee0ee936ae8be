// Reads, writes and the small calls of the random host.
#include "data/local_values.h"
#include "model/session.h"
#include "model/session_values.h"
#include "model/world.h"

namespace tavmir::model
{

void Session::get(SeededRandom& random)
{
    const Text address = random.pick(addresses_);
    const int count = random.percent(10) ? random.between(-2, 1) : random.between(1, 36);
    note("GetRegisterData " + shown(address) + " count " + std::to_string(count));
    QByteArray data("stale");
    Bytes expected;
    const int result = GetRegisterData(qtText(address), 1, 2, 3, &data, count);
    compareResults(model_.getRegisterData(address, expected, count), result);
    if (expected != modelBytes(data)) {
        differ("data: expected " + shown(expected) + ", driver gave " + shown(modelBytes(data)));
    }
}

void Session::set(SeededRandom& random)
{
    const Text address = random.pick(addresses_);
    const Text text = randomText(random);
    const int count = random.percent(10) ? random.between(-2, 0) : random.between(1, 9);
    const Bytes bytes = randomBytes(random, random.below(21));
    const int station = random.between(-1, 300);
    const int hostKey = random.between(-1, 13);
    const int varKey = random.between(0, 3);
    note("SetRegisterData " + shown(address) + " count " + std::to_string(count) + " data " +
         shown(bytes));
    QByteArray data = qtBytes(bytes);
    const int result =
        SetRegisterData(qtText(address), 9, qtText(text), station, &data, count, hostKey, varKey);
    const int expected =
        model_.setRegisterData(address, text, station, bytes, count, hostKey, varKey);
    compareResults(expected, result);
    if (bytes != modelBytes(data)) {
        differ("the caller's data was changed");
    }
}

void Session::storeLocally(SeededRandom& random)
{
    Var var = randomRecord(random);
    var.count = random.between(-1, 4);
    var.value = randomBytes(random, random.below(18));
    note("WriteDataToLocal " + shownVar(var));
    RW_VAR record = qtVar(var);
    WriteDataToLocal(&record);
    model_.writeDataToLocal(var);
}

void Session::parse(SeededRandom& random)
{
    const Text address = randomAddress(random, labels_);
    note("get_label_address_info " + shown(address));
    ControlInformationM info;
    Resolved resolved;
    const int result = get_label_address_info(qtText(address), info);
    compareResults(model_.resolve(address, resolved), result);
    const std::string difference = differenceOfResolved(resolved, info);
    if (!difference.empty()) {
        differ("resolved." + difference);
    }
}

void Session::stations(SeededRandom& random)
{
    const int station = random.between(-1, 9);
    const int enable = random.percent(85) ? random.between(0, 1) : random.between(-1, 5);
    note("EnCommStation " + std::to_string(station) + " " + std::to_string(enable));
    if (random.percent(50)) {
        EnCommStation(station, enable);
    } else {
        EnableEthernet(station, enable);
    }
    model_.enableStation(station, enable);
    for (int asked = -1; asked < 10; ++asked) {
        compareResults(model_.isStationDisabled(asked), Ethernetcontains(asked));
    }
}

void Session::changeWords(SeededRandom& random)
{
    const int which = random.between(0, 7);
    note("ComInfo change " + std::to_string(which));
    switch (which) {
    case 0:
        return setWord(RetryLimit, random.between(-1, 3));
    case 1:
        return setWord(RetryCount, random.between(0, 3));
    case 2:
        return setWord(StationMode, random.between(-1, 1));
    case 3:
        return setWord(DefaultStation, random.between(-1, 300));
    case 4:
        return setWord(WriteMode, random.percent(80) ? 2 : random.between(-1, 3));
    case 5:
        return setWord(ScanDone, random.between(0, 1));
    case 6:
        setWord(HostWord14, random.between(0, 2));
        return setWord(HostWord15, random.between(0, 2));
    default:
        setWord(ComStation, random.between(0, 99));
        SetComInfo(&words_);
        model_.setComInfo();
    }
}

void Session::changeCallbacks(SeededRandom& random)
{
    model_.hasVarDoneCallback = !random.percent(15);
    model_.hasCommFailCallback = !random.percent(15);
    RegistCallBackFuncIntf(model_.hasVarDoneCallback ? &Session::varDone : nullptr,
                           model_.hasCommFailCallback ? &Session::commFail : nullptr);
    model_.callbackReadAddress = random.percent(60) ? random.pick(addresses_) : Text();
    note("callbacks read " + shown(model_.callbackReadAddress));
}

void Session::constants(SeededRandom& random)
{
    compareResults(-1, PLCAddressChangeIntef());
    compareResults(1, QueryFinishFlag());
    const int type = random.between(-3, 14);
    note("get_data_type_size " + std::to_string(type));
    compareResults(DriverModel::sizeOfType(type), PLC_driver.get_data_type_size(type));
    compareResults(0, get_label_address_query(QStringList(), random.between(-1, 3)));
}

} // namespace tavmir::model
