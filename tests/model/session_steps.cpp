// The calls that a random host makes, and how often. The cycle is in session_cycle.cpp.
#include "data/local_values.h"
#include "model/session.h"
#include "model/world.h"

namespace tavmir::model
{

namespace
{

constexpr std::size_t kAddresses = 40;

std::string shownVar(const Var& var)
{
    return "type " + std::to_string(var.dataType) + " at " + std::to_string(var.elementAddress) +
           " station " + std::to_string(var.station) + " count " + std::to_string(var.count) +
           " key " + std::to_string(var.hostKey) + "," + std::to_string(var.varKey) + " " +
           shown(var.addressText) + " value " + shown(var.value) + " hostData2 " +
           std::to_string(var.hostData2);
}

Bytes randomBytes(SeededRandom& random, std::size_t count)
{
    Bytes bytes(count);
    for (unsigned char& byte : bytes)
        byte = random.percent(25) ? 0 : static_cast<unsigned char>(random.next());
    return bytes;
}

} // namespace

Var Session::randomRecord(SeededRandom& random)
{
    Var var;
    var.hostKey = random.between(-1, 13);
    var.varKey = random.between(0, 3);
    var.hostData2 = random.percent(88) ? 1 : random.pick<std::int32_t>({0, 7, -1});
    var.hostData3 = random.between(0, 9);
    var.hostData4 = random.between(0, 2);
    var.status = random.percent(90) ? 0 : random.between(-1, 5);
    var.addressText = random.pick(addresses_);
    var.auxText = randomText(random);
    var.dataType = random.percent(96) ? random.pick<std::int32_t>({1, 4, 4, 6, 7, 10})
                                      : random.pick<std::int32_t>({0, 2, 3, 5, 8, 9, 11, 12, -4});
    var.elementAddress =
        random.percent(96) ? random.between(0, 400) : random.between(INT32_MIN, INT32_MAX);
    var.station = random.between(-1, 300);
    var.count = 1;
    var.hostData12 = random.percent(70) ? 0 : -1;
    var.hostData13 = random.between(0, 1);
    return var;
}

void Session::passLabels(SeededRandom& random)
{
    const int count = random.between(0, 3) + (labels_.empty() ? 1 : 0);
    std::vector<Label> labels;
    QList<Label_Type_Info> list;
    for (int i = 0; i < count; ++i) {
        labels.push_back(randomLabel(random));
        list.append(qtLabel(labels.back()));
    }
    note("PassVarName_2 with " + std::to_string(count) + " labels");
    model_.passVarNames(labels);
    PassVarName_2(random.percent(3) && count == 0 ? nullptr : &list);
    labels_.clear();
    for (const auto& entry : model_.labelTable) {
        labels_.push_back(entry.second);
        const auto stored = PLC_driver.labelTable.constFind(qtText(entry.first));
        if (stored == PLC_driver.labelTable.constEnd() || !sameLabel(entry.second, stored.value()))
            differ("labelTable lacks or changed " + shown(entry.first));
    }
    if (model_.labelTable.size() != static_cast<std::size_t>(PLC_driver.labelTable.size()))
        differ("labelTable.size");
    addresses_.clear();
    while (addresses_.size() < kAddresses)
        addresses_.push_back(randomAddress(random, labels_));
}

void Session::rebuild(SeededRandom& random)
{
    std::vector<PolledVariable> variables;
    QList<HOSTVAR> list;
    const int count = random.percent(6) ? 0 : random.between(1, 12);
    for (int i = 0; i < count; ++i) {
        PolledVariable variable;
        variable.station = static_cast<std::uint8_t>(random.next());
        variable.auxText = randomText(random);
        variable.addressText = random.pick(addresses_);
        variable.count = random.percent(10) ? random.between(-2, 0) : random.between(1, 24);
        // A host checks the types first; now and then one does not.
        AddressModel probe(model_.labelTable, Stream::Qt5);
        const bool accepted = probe.resolve(variable.addressText) == 0;
        if (accepted && probe.resolved.dataType == 0 && !random.percent(2))
            continue;
        variables.push_back(variable);
        list.append(qtPolled(variable));
        note("  polled " + shown(variable.addressText) + " count " +
             std::to_string(variable.count));
    }
    note("ReCreatReadVarList");
    const int result = ReCreatReadVarList(&list);
    compareResults(model_.recreateReadVarList(variables), result);
}

void Session::addRead(SeededRandom& random)
{
    Var var = randomRecord(random);
    if (random.percent(70))
        var.hostData2 = 0;
    note("AddListReadVar " + shownVar(var));
    const RW_VAR record = qtVar(var);
    const int result = AddListReadVar(&record);
    compareResults(model_.addListReadVar(var), result);
}

void Session::addWrite(SeededRandom& random)
{
    const int times = random.percent(10) ? random.between(20, 60) : random.between(1, 3);
    Var var = randomRecord(random);
    for (int i = 0; i < times; ++i) {
        var.varKey = random.between(0, 3);
        var.elementAddress = wrapped(std::int64_t{var.elementAddress} + 16);
        if (random.percent(10))
            var.dataType = randomRecord(random).dataType;
        if (random.percent(15))
            var.count = random.between(-1, 5);
        var.value =
            randomBytes(random, random.percent(85) ? (var.dataType == 6 ? 4 : 2) : random.below(7));
        note("AddListWriteVar " + shownVar(var));
        const RW_VAR record = qtVar(var);
        const int result = AddListWriteVar(&record);
        compareResults(model_.addListWriteVar(var), result);
    }
}

void Session::addOnceRead(SeededRandom& random)
{
    // Now and then a whole screen at once: enough to fill the list.
    const int times = random.percent(4) ? 120 : 1;
    for (int i = 0; i < times; ++i) {
        Var var = randomRecord(random);
        if (random.percent(85))
            var.hostData2 = 0;
        var.count = random.percent(10) ? random.between(-2, 0) : random.between(1, 40);
        note("AddListOnceReadVar " + shownVar(var));
        RW_VAR record = qtVar(var);
        const int result = AddListOnceReadVar(&record);
        compareResults(model_.addListOnceReadVar(var), result);
        const std::string difference = differenceOfVars(var, record);
        if (!difference.empty())
            differ("the caller's record: " + difference);
    }
}

void Session::get(SeededRandom& random)
{
    const Text address = random.pick(addresses_);
    const int count = random.percent(10) ? random.between(-2, 1) : random.between(1, 36);
    note("GetRegisterData " + shown(address) + " count " + std::to_string(count));
    QByteArray data("stale");
    Bytes expected;
    const int result = GetRegisterData(qtText(address), 1, 2, 3, &data, count);
    compareResults(model_.getRegisterData(address, expected, count), result);
    if (expected != modelBytes(data))
        differ("data: expected " + shown(expected) + ", driver gave " + shown(modelBytes(data)));
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
    if (bytes != modelBytes(data))
        differ("the caller's data was changed");
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
    if (!difference.empty())
        differ("resolved." + difference);
}

void Session::stations(SeededRandom& random)
{
    const int station = random.between(-1, 9);
    const int enable = random.percent(85) ? random.between(0, 1) : random.between(-1, 5);
    note("EnCommStation " + std::to_string(station) + " " + std::to_string(enable));
    if (random.percent(50))
        EnCommStation(station, enable);
    else
        EnableEthernet(station, enable);
    model_.enableStation(station, enable);
    for (int asked = -1; asked < 10; ++asked)
        compareResults(model_.isStationDisabled(asked), Ethernetcontains(asked));
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
