// What the soak of the runtime plays with: three stations, each with places of its own, so that
// every address says which station it belongs to; who may write which variable; and values that
// tell the place and the write that they belong to.
#ifndef TAVMIR_TESTS_SOAK_RUNTIME_PLANT_H
#define TAVMIR_TESTS_SOAK_RUNTIME_PLANT_H

#include "controller/bit_memory.h"
#include "plan/polled_plan.h"
#include "project/address_resolver.h"

#include <QtCore/QByteArray>

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tavmir::soak
{

constexpr int kWorkers = 8;
constexpr std::array<int, 3> kStations = {1, 2, 201};

enum class Kind {
    bit,
    word,
    doubleWord,
    real,
    shortText, // 5 to 26 words: one request, where no other element takes its room
    longText,  // 60 words: two requests at least
    flags,     // a word whose bits are written one by one
    refused    // a word that the controller has no room for
};

// One element on the wire.
struct Place {
    int station = 0;
    int bits = 0; // 1, 16 or 32
    std::uint32_t address = 0;
    int variable = 0;
    int part = 0; // of the variable
};

struct Variable {
    Kind kind = Kind::word;
    project::Element element;
    int station = 0;
    int owner = 0; // the worker that writes it; each bit of flags has its own, see ownerOfBit
    int firstPlace = 0;
    int places = 0;

    bool isText() const { return kind == Kind::shortText || kind == Kind::longText; }
    bool isUnique() const { return kind != Kind::bit && kind != Kind::flags; }
};

class Plant
{
public:
    explicit Plant(int replyTimeoutMs);

    void setPort(int port) { project_.connection.port = port; }
    const project::Project& project() const { return project_; }
    const std::vector<Variable>& variables() const { return variables_; }
    const std::vector<Place>& places() const { return places_; }
    const Variable& variable(int number) const { return variables_[asIndex(number)]; }
    const Place& place(int number) const { return places_[asIndex(number)]; }
    // Variables of the kinds that the worker writes whole.
    const std::vector<int>& ownedBy(int worker) const { return owned_[asIndex(worker)]; }
    const std::vector<int>& flags() const { return flags_; }
    const std::vector<int>& refused() const { return refused_; }

    // -1: nothing of the plant lies there.
    int placeAt(int bits, std::uint32_t address) const;
    // -1: no variable of this name.
    int variableNamed(const QString& addressText) const;

    // What the number-th write of a variable puts into the place; numbers count from 1.
    std::uint32_t valueOf(int place, std::uint32_t number) const;
    // Whether some write of this very place may have made the value, or none yet.
    bool belongs(int place, std::uint32_t value) const;

    // A bit of flags, as the project names it.
    const project::Element& bitOf(int variable, int bit) const;
    static int ownerOfBit(int bit) { return bit / 2; }

    // The memory's pages for all places but the refused ones; with a memory of just as many, there
    // is no room for those.
    void makeRoom(controller::BitMemory& memory) const;
    std::size_t pages() const;

    static std::size_t asIndex(int number) { return static_cast<std::size_t>(number); }

private:
    void add(Kind kind, const QString& addressText, int station, int owner);
    std::uint32_t tagOf(int place) const;

    project::Project project_;
    std::vector<Variable> variables_;
    std::vector<Place> places_;
    std::array<std::vector<int>, kWorkers> owned_;
    std::vector<int> flags_;
    std::vector<int> refused_;
    std::unordered_map<std::uint64_t, int> placesByAddress_;
    std::unordered_map<std::string, int> variablesByName_;
    std::unordered_map<int, std::vector<project::Element>> flagBits_;
};

// One element's bytes as the session takes and gives them, least significant first.
std::uint32_t numberIn(const QByteArray& bytes, int at, int count);
int bytesOf(const Place& place);

} // namespace tavmir::soak

#endif
