// The threads beside the cycle: readers, writers, the operator.
#include "dice.h"
#include "host_under_test.h"

#include <chrono>

namespace tavmir::soak
{

namespace
{

const std::size_t kMostOpenWrites = 90; // more than a batch takes
const std::size_t kMostOpenReads = 40;  // of at most 8 elements: the list never fills
const int kReadKey = 200;
const int kWriteKey = 100;

void rest(int microseconds)
{
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
}

std::uint32_t littleEndian(const QByteArray& bytes, int at, int count)
{
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(at + i)))
                 << (8 * i);
    }
    return value;
}

void appendLittleEndian(QByteArray& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i) {
        bytes.append(static_cast<char>((value >> (8 * i)) & 0xFF));
    }
}

Area arrayOf(int writer, bool doubleWords)
{
    return static_cast<Area>((doubleWords ? DoubleWords0 : Words0) + writer);
}

} // namespace

void HostUnderTest::runReader(int reader, std::uint64_t seed)
{
    Dice dice(seed);
    while (tick(static_cast<Worker>(Reader0 + reader))) {
        const int count = 1 + dice.below(4);
        check(static_cast<Area>(dice.below(kAreas)), dice.below(kElements - count), count);
        rest(100);
    }
}

// Reads the cache: every value must be one that may stand there.
void HostUnderTest::check(Area area, int index, int count)
{
    const int bytes = bitsOf(area) / 8;
    QByteArray data;
    {
        const std::shared_lock<std::shared_mutex> gate(gate_);
        GetRegisterData(addressText(area, index), 0, 0, 0, &data, bytes == 4 ? 2 * count : count);
    }
    // Loaded after the read: a write in between only adds values that may stand there.
    const std::uint32_t written =
        area <= DoubleWords1 ? written_[static_cast<std::size_t>(area)].load() : 0;
    if (data.size() != bytes * count) {
        return found("a read of " + std::to_string(data.size()) + " bytes");
    }
    for (int i = 0; i < count; ++i) {
        const std::uint32_t value = littleEndian(data, i * bytes, bytes);
        if (!mayHold(area, index + i, value, written)) {
            found("element " + std::to_string(index + i) + " of area " + std::to_string(area) +
                  " holds " + std::to_string(value));
        }
    }
    valuesRead_ += static_cast<std::uint64_t>(count);
}

void HostUnderTest::runWriter(int writer, std::uint64_t seed)
{
    Dice dice(seed);
    while (tick(static_cast<Worker>(Writer0 + writer))) {
        if (writes_.open() > kMostOpenWrites) {
            rest(500);
            continue;
        }
        const Area area = arrayOf(writer, dice.below(2) == 0);
        const int kind = dice.below(20);
        const int index = dice.below(kElements - 8);
        if (kind == 0) {
            writeBit(writer, index % 8 + 8 * writer, dice.below(16), dice.below(2) == 0);
        } else if (kind < 5) {
            write(writer, area, index, 2 + dice.below(6));
        } else if (kind < 10) {
            queueRecord(writer, area, index);
        } else {
            write(writer, area, index, 1);
        }
        rest(300 + dice.below(900));
    }
}

// The driver queues the elements one by one: with several, the cycle must not take the first of
// them before the last is there, or the write would be reported once for each part.
void HostUnderTest::write(int writer, Area area, int index, int count)
{
    Operation operation{area, index, count, {}};
    QByteArray data;
    const int bytes = bitsOf(area) / 8;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t number = ++written_[static_cast<std::size_t>(writer)];
        operation.values.push_back(valueOf(area, index + i, number));
        appendLittleEndian(data, operation.values.back(), bytes);
    }
    const int key = writes_.begin(operation);
    std::shared_lock<std::shared_mutex> shared(gate_, std::defer_lock);
    std::unique_lock<std::shared_mutex> alone(gate_, std::defer_lock);
    if (count == 1) {
        shared.lock();
    } else {
        alone.lock();
    }
    SetRegisterData(addressText(area, index), 0, QString(), kStation, &data,
                    bytes == 4 ? 2 * count : count, kWriteKey + writer, key);
}

// One element as a record of the host's own.
void HostUnderTest::queueRecord(int writer, Area area, int index)
{
    Operation operation{area, index, 1, {}};
    const std::uint32_t number = ++written_[static_cast<std::size_t>(writer)];
    operation.values.push_back(valueOf(area, index, number));
    RW_VAR record;
    record.hostKey = kWriteKey + writer;
    record.varKey = writes_.begin(operation);
    record.hostData2 = 1;
    record.dataType = bitsOf(area) == 32 ? 6 : 4;
    record.elementAddress = addressOf(area, index);
    record.station = kStation;
    record.count = 1;
    appendLittleEndian(record.value, operation.values[0], bitsOf(area) / 8);
    const std::shared_lock<std::shared_mutex> gate(gate_);
    AddListWriteVar(&record);
}

// A bit write looks into the cache without the driver's lock: everything else waits for it. A word
// that was never read is left alone: its other bits would be written as zero.
void HostUnderTest::writeBit(int writer, int index, int bit, bool on)
{
    const std::unique_lock<std::shared_mutex> gate(gate_);
    PLC_driver.cacheMutex.lock();
    const bool known = PLC_driver.wordCache.contains(addressOf(Flags, index));
    PLC_driver.cacheMutex.unlock();
    if (!known) {
        return;
    }
    const int key = writes_.begin(Operation{Flags, index, 1, {}});
    QByteArray data(1, on ? '\1' : '\0');
    const QString address = addressText(Flags, index) + QString(".b[%1]").arg(bit);
    SetRegisterData(address, 0, QString(), kStation, &data, 1, kWriteKey + writer, key);
}

void HostUnderTest::runOperator(std::uint64_t seed)
{
    Dice dice(seed);
    while (tick(Operator)) {
        const int kind = dice.below(40);
        if (kind == 0) {
            rebuild(dice.below(3));
        } else if (kind == 1 && dice.below(4) == 0) {
            EnCommStation(kStation, 0);
        } else if (kind == 2) {
            EnCommStation(-1, 0);
        } else if (kind < 6) {
            EnableEthernet(2 + dice.below(20), dice.below(2));
        } else if (reads_.open() < kMostOpenReads) {
            readOnce(dice.below(kElements - 8), 1 + dice.below(7));
        }
        rest(1000);
        EnCommStation(kStation, 1);
    }
    EnCommStation(-1, 0);
}

void HostUnderTest::readOnce(int index, int count)
{
    RW_VAR record;
    record.hostKey = kReadKey;
    record.varKey = reads_.begin(Operation{Constants, index, count, {}});
    record.addressText = addressText(Constants, index);
    record.count = 2 * count;
    const std::shared_lock<std::shared_mutex> gate(gate_);
    if (AddListOnceReadVar(&record) < 1) {
        found("a one-shot read was refused");
    }
}

void HostUnderTest::rebuild(int variant)
{
    QList<HOSTVAR> list;
    int expected = 0;
    for (int area = 0; area < kAreas; ++area) {
        if (variant == area % 3 && variant != 0) {
            continue;
        }
        HOSTVAR variable;
        variable.addressText = addressText(static_cast<Area>(area), 0);
        variable.count = bitsOf(static_cast<Area>(area)) == 32 ? 2 * kElements : kElements;
        list.append(variable);
        expected += kElements;
    }
    const std::shared_lock<std::shared_mutex> gate(gate_);
    if (ReCreatReadVarList(&list) != expected) {
        found("a rebuild of another size than " + std::to_string(expected));
    }
    ++rebuilds_;
}

} // namespace tavmir::soak
