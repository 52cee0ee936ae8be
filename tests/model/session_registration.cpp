// Set-up and registrations of the random host.
#include "model/session.h"
#include "model/session_values.h"
#include "model/world.h"

namespace tavmir::model
{

namespace
{

constexpr std::size_t kAddresses = 40;

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
        if (stored == PLC_driver.labelTable.constEnd() ||
            !sameLabel(entry.second, stored.value())) {
            differ("labelTable lacks or changed " + shown(entry.first));
        }
    }
    if (model_.labelTable.size() != static_cast<std::size_t>(PLC_driver.labelTable.size())) {
        differ("labelTable.size");
    }
    addresses_.clear();
    while (addresses_.size() < kAddresses) {
        addresses_.push_back(randomAddress(random, labels_));
    }
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
        if (accepted && probe.resolved.dataType == 0 && !random.percent(2)) {
            continue;
        }
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
    if (random.percent(70)) {
        var.hostData2 = 0;
    }
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
        if (random.percent(10)) {
            var.dataType = randomRecord(random).dataType;
        }
        if (random.percent(15)) {
            var.count = random.between(-1, 5);
        }
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
        if (random.percent(85)) {
            var.hostData2 = 0;
        }
        var.count = random.percent(10) ? random.between(-2, 0) : random.between(1, 40);
        note("AddListOnceReadVar " + shownVar(var));
        RW_VAR record = qtVar(var);
        const int result = AddListOnceReadVar(&record);
        compareResults(model_.addListOnceReadVar(var), result);
        const std::string difference = differenceOfVars(var, record);
        if (!difference.empty()) {
            differ("the caller's record: " + difference);
        }
    }
}

} // namespace tavmir::model
