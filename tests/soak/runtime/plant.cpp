// The project, made up of text, and its places.
#include "plant.h"

#include "plan/wire_element.h"
#include "project/project_reader.h"

#include <cstdlib>

namespace tavmir::soak
{

namespace
{

constexpr int kBits = 48;
constexpr int kWords = 64;
constexpr int kDoubleWords = 32;
constexpr int kFlags = 8;
constexpr int kBitsPerWord = 16;
constexpr std::uint32_t kTags = 63;
constexpr int kWordTagShift = 10;
constexpr int kDoubleTagShift = 24;

const char* const kLabelNames[] = {"A", "B", "C"};

// name, type, address within the station, further keys
QByteArray variableText(const QByteArray& name, const QByteArray& type, int address,
                        const QByteArray& more)
{
    return "{ \"name\": \"" + name + "\", \"type\": \"" + type +
           "\", \"address\": " + QByteArray::number(address) + more + " }";
}

QByteArray arrayOf(int elements)
{
    return ", \"array\": { \"bounds\": [[0, " + QByteArray::number(elements - 1) + "]] }";
}

int shortWords(int worker)
{
    return 5 + 3 * worker;
}

// All of a station, its variables and the polled entries that give them their station.
void appendStation(int number, QByteArray& labels, QByteArray& polled)
{
    const QByteArray label = kLabelNames[number];
    const int base = 1000000 * (number + 1);
    QByteArray variables = variableText("bits", "bit", base, arrayOf(kBits));
    QList<QByteArray> names = {"bits", "words", "doubles", "reals", "flags", "refused"};
    variables += "," + variableText("words", "word", base + 10000, arrayOf(kWords));
    variables += "," + variableText("doubles", "dword", base + 20000, arrayOf(kDoubleWords));
    variables += "," + variableText("reals", "real", base + 30000, arrayOf(kDoubleWords));
    variables +=
        "," + variableText("flags", "word", base + 80000, ", \"bits\": true" + arrayOf(kFlags));
    variables += "," + variableText("refused", "word", base + 500000, arrayOf(kFlags));
    for (int i = 0; i < kWorkers; ++i) {
        const QByteArray own = QByteArray::number(i);
        variables += "," + variableText("short" + own, "text", base + 40000 + 1000 * i,
                                        ", \"words\": " + QByteArray::number(shortWords(i)));
        variables +=
            "," + variableText("long" + own, "text", base + 60000 + 1000 * i, ", \"words\": 60");
        names << "short" + own << "long" + own;
    }
    labels += QByteArray(number > 0 ? ", " : "") + "{ \"name\": \"" + label +
              "\", \"variables\": [" + variables + "] }";
    for (const QByteArray& name : names) {
        polled +=
            QByteArray(polled.isEmpty() ? "" : ", ") + "{ \"address\": \"" + label + "." + name +
            "\", \"station\": " + QByteArray::number(kStations[Plant::asIndex(number)]) + " }";
    }
}

QByteArray projectText(int replyTimeoutMs)
{
    QByteArray labels;
    QByteArray polled;
    for (int i = 0; i < static_cast<int>(kStations.size()); ++i) {
        appendStation(i, labels, polled);
    }
    return "{ \"connection\": { \"station\": 1, \"stationMode\": \"own\", \"retryLimit\": 2, "
           "\"reconnectMinMs\": 1, \"reconnectMaxMs\": 20, \"replyTimeoutMs\": " +
           QByteArray::number(replyTimeoutMs) + " }, \"labels\": [" + labels + "], \"polled\": [" +
           polled + "] }";
}

std::uint64_t placeKey(int bits, std::uint32_t address)
{
    return static_cast<std::uint64_t>(bits) << 32 | address;
}

} // namespace

Plant::Plant(int replyTimeoutMs)
{
    const project::ReadOutcome outcome = project::readProject(projectText(replyTimeoutMs), "soak");
    if (!outcome.project) {
        std::fprintf(stderr, "%s\n", qPrintable(outcome.error));
        std::abort();
    }
    project_ = *outcome.project;
    for (int i = 0; i < static_cast<int>(kStations.size()); ++i) {
        const int station = kStations[asIndex(i)];
        const auto addArray = [&](Kind kind, const char* name, int count) {
            for (int k = 0; k < count; ++k) {
                add(kind, QString("%1.%2[%3]").arg(kLabelNames[i], name).arg(k), station,
                    k % kWorkers);
            }
        };
        addArray(Kind::bit, "bits", kBits);
        addArray(Kind::word, "words", kWords);
        addArray(Kind::doubleWord, "doubles", kDoubleWords);
        addArray(Kind::real, "reals", kDoubleWords);
        addArray(Kind::flags, "flags", kFlags);
        addArray(Kind::refused, "refused", kFlags);
        for (int k = 0; k < kWorkers; ++k) {
            add(Kind::shortText, QString("%1.short%2").arg(kLabelNames[i]).arg(k), station, k);
            add(Kind::longText, QString("%1.long%2").arg(kLabelNames[i]).arg(k), station, k);
        }
    }
}

void Plant::add(Kind kind, const QString& addressText, int station, int owner)
{
    const project::Resolution resolution = project::resolveAddress(project_, addressText);
    if (!resolution.ok) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(addressText), qPrintable(resolution.problem));
        std::abort();
    }
    const int number = static_cast<int>(variables_.size());
    Variable variable;
    variable.kind = kind;
    variable.element = resolution.element;
    variable.station = station;
    variable.owner = owner;
    variable.firstPlace = static_cast<int>(places_.size());
    variable.places = project::wireElementCount(resolution.element);
    const int bits = project::wireElementBits(resolution.element);
    for (int part = 0; part < variable.places; ++part) {
        Place place;
        place.station = station;
        place.bits = bits;
        place.address = resolution.element.address + static_cast<std::uint32_t>(part * bits);
        place.variable = number;
        place.part = part;
        placesByAddress_[placeKey(bits, place.address)] = static_cast<int>(places_.size());
        places_.push_back(place);
    }
    variables_.push_back(variable);
    variablesByName_[addressText.toStdString()] = number;
    if (kind == Kind::flags) {
        flags_.push_back(number);
        for (int bit = 0; bit < kBitsPerWord; ++bit) {
            const QString text = addressText + QString(".b[%1]").arg(bit);
            flagBits_[number].push_back(project::resolveAddress(project_, text).element);
        }
    } else if (kind == Kind::refused) {
        refused_.push_back(number);
    } else {
        owned_[asIndex(owner)].push_back(number);
    }
}

int Plant::placeAt(int bits, std::uint32_t address) const
{
    const auto found = placesByAddress_.find(placeKey(bits, address));
    return found == placesByAddress_.end() ? -1 : found->second;
}

int Plant::variableNamed(const QString& addressText) const
{
    const auto found = variablesByName_.find(addressText.toStdString());
    return found == variablesByName_.end() ? -1 : found->second;
}

std::uint32_t Plant::tagOf(int place) const
{
    const Place& its = this->place(place);
    const Variable& variable = this->variable(its.variable);
    const int number = variable.isText() ? its.part : its.variable;
    return 1 + static_cast<std::uint32_t>(number) % kTags;
}

std::uint32_t Plant::valueOf(int place, std::uint32_t number) const
{
    const int bits = this->place(place).bits;
    if (bits == 1) {
        return number & 1;
    }
    const int shift = bits == 16 ? kWordTagShift : kDoubleTagShift;
    return tagOf(place) << shift | (number & ((1U << shift) - 1));
}

bool Plant::belongs(int place, std::uint32_t value) const
{
    const Place& its = this->place(place);
    if (!variable(its.variable).isUnique() || value == 0) {
        return its.bits == 32 || value >> its.bits == 0;
    }
    return value >> (its.bits == 16 ? kWordTagShift : kDoubleTagShift) == tagOf(place);
}

const project::Element& Plant::bitOf(int variable, int bit) const
{
    return flagBits_.at(variable)[asIndex(bit)];
}

void Plant::makeRoom(controller::BitMemory& memory) const
{
    for (const Place& place : places_) {
        if (variable(place.variable).kind == Kind::refused) {
            continue;
        }
        const auto station = static_cast<std::uint8_t>(place.station);
        memory.write(station, place.address, place.bits, 1);
        memory.write(station, place.address, place.bits, 0);
    }
}

std::size_t Plant::pages() const
{
    controller::BitMemory memory;
    makeRoom(memory);
    return memory.pageCount();
}

std::uint32_t numberIn(const QByteArray& bytes, int at, int count)
{
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i) {
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.at(at + i)))
                  << (8 * i);
    }
    return number;
}

int bytesOf(const Place& place)
{
    return place.bits == 1 ? 1 : place.bits / 8;
}

} // namespace tavmir::soak
