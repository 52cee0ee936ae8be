// Asking, answering, ending.
#include "books.h"

namespace tavmir::soak
{

namespace
{

using Lock = std::lock_guard<std::mutex>;

constexpr std::size_t kMostFindings = 20;
constexpr std::size_t kMostForeign = 4096;
constexpr std::size_t kMostKeys = 8192;
constexpr std::chrono::seconds kForeignFor{60};
constexpr char kUnderWay[] = "no answer in its time, and it is still under way";
constexpr char kRestUnknown[] = "elements done, the rest unknown: ";
constexpr char kBitHadToWait[] = "earlier writes did not end in time";
constexpr char kBitNotRead[] = "its word could not be read: ";

Time now()
{
    return std::chrono::steady_clock::now();
}

std::string inWords(OutcomeState state, int acknowledged, int elements)
{
    return std::string(host::outcomeWord(state)) + " (" + std::to_string(acknowledged) + " of " +
           std::to_string(elements) + ")";
}

} // namespace

bool Books::isUnderWay(const Outcome& outcome)
{
    return outcome.reason.endsWith(kUnderWay);
}

void Books::seen(const controller::Simulation::Outcome& outcome)
{
    const Lock lock(mutex_);
    const MemoryBook::Seen seen = memory_.seen(outcome);
    for (const std::uint64_t number : seen.reached) {
        const auto found = open_.find(number);
        if (found != open_.end()) {
            ++found->second.reached;
        }
    }
    for (const std::uint64_t number : seen.doubted) {
        const auto found = open_.find(number);
        if (found != open_.end()) {
            found->second.doubted = true;
        }
    }
    if (!seen.finding.empty()) {
        find(seen.finding);
    }
}

Books::Asked Books::ask(OperationKind kind, int variable)
{
    Asked asked;
    asked.operation = ++lastOperation_;
    Operation operation;
    operation.kind = kind;
    operation.variable = variable;
    operation.askedAt = now();
    open_.emplace(asked.operation, operation);
    ++openEnds_;
    ++of(kind).asked;
    return asked;
}

Books::Asked Books::askRead(int variable)
{
    const Lock lock(mutex_);
    return ask(OperationKind::read, variable);
}

Books::Asked Books::askWrite(int variable)
{
    const Lock lock(mutex_);
    Asked asked = ask(OperationKind::write, variable);
    const std::uint32_t number = ++numbers_[variable];
    const Variable& its = plant_.variable(variable);
    for (int place = its.firstPlace; place < its.firstPlace + its.places; ++place) {
        const std::uint32_t value = plant_.valueOf(place, number);
        memory_.element(place).asked(asked.operation, value);
        for (int i = 0; i < bytesOf(plant_.place(place)); ++i) {
            asked.bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
        }
    }
    return asked;
}

void Books::given(std::uint64_t operation, quint64 key, bool awaited)
{
    const Lock lock(mutex_);
    const auto found = open_.find(operation);
    found->second.key = key;
    found->second.awaited = awaited;
    if (!awaited) {
        ++of(found->second.kind).notAwaited;
    }
    if (!byKey_.emplace(key, operation).second) {
        find("key " + std::to_string(key) + " is that of two operations");
    }
    const auto ahead = foreign_.find(key);
    if (ahead != foreign_.end()) {
        const End itsEnd = ahead->second;
        --foreignEnds_[static_cast<int>(itsEnd.kind)];
        foreign_.erase(ahead);
        end(found, itsEnd);
    }
}

void Books::ended(const host::FeedEntry& entry)
{
    const Lock lock(mutex_);
    const host::OperationEnd& told = entry.operation;
    End itsEnd;
    itsEnd.kind = told.kind;
    itsEnd.state = told.state;
    itsEnd.elements = told.elements;
    itsEnd.acknowledged = told.acknowledged;
    itsEnd.station = told.station;
    itsEnd.restMayBeThere = entry.text.contains(kRestUnknown);
    itsEnd.at = now();
    const auto key = byKey_.find(told.key);
    if (key == byKey_.end()) {
        ++foreignEnds_[static_cast<int>(told.kind)];
        if (!foreign_.emplace(told.key, itsEnd).second) {
            find("operation " + std::to_string(told.key) + " ended twice");
        }
        return forgetForeign();
    }
    const auto found = open_.find(key->second);
    if (found == open_.end() || found->second.end) {
        return find("operation " + std::to_string(told.key) + " ended twice");
    }
    end(found, itsEnd);
}

// Those of bits, whose keys nobody names.
void Books::forgetForeign()
{
    while (foreign_.size() > kMostForeign && foreign_.begin()->second.at < now() - kForeignFor) {
        foreign_.erase(foreign_.begin());
    }
}

void Books::end(Open::iterator operation, const End& end)
{
    Operation& its = operation->second;
    --openEnds_;
    const Variable& variable = plant_.variable(its.variable);
    if (end.kind != its.kind || end.elements != variable.places ||
        end.station != variable.station) {
        find(nameOf(its.variable) + " ended as something else");
    }
    if (its.kind == OperationKind::write) {
        settleWrite(operation->first, its, end);
    }
    its.end = end;
    if (its.answer) {
        compare(its, *its.answer, end);
    }
    closeWhenOver(operation);
}

void Books::settleWrite(std::uint64_t number, const Operation& operation, const End& end)
{
    const bool doubted = operation.doubted &&
                         (end.state == OutcomeState::refused || end.state == OutcomeState::partial);
    Fate rest = doubted || end.restMayBeThere || end.state == OutcomeState::unknown ? Fate::maybe
                                                                                    : Fate::never;
    const Variable& variable = plant_.variable(operation.variable);
    if (variable.isUnique() && !doubted) {
        checkReached(operation, end);
    }
    // Requests carry the elements in their order, and the first that fails takes the rest along.
    for (int i = 0; i < variable.places; ++i) {
        const std::string finding = memory_.element(variable.firstPlace + i)
                                        .settle(number, i < end.acknowledged ? Fate::done : rest);
        if (!finding.empty()) {
            find(nameOf(operation.variable) + " part " + std::to_string(i) + ", " +
                 inWords(end.state, end.acknowledged, end.elements) + ": " + finding);
        }
    }
}

// How many elements the controller must have stored when the end is told.
void Books::checkReached(const Operation& operation, const End& end)
{
    const bool mayBeMore = end.state == OutcomeState::unknown || end.restMayBeThere;
    const bool right =
        mayBeMore ? operation.reached >= end.acknowledged : operation.reached == end.acknowledged;
    const bool counts = (end.state == OutcomeState::done) == (end.acknowledged == end.elements) &&
                        (end.state == OutcomeState::partial) ==
                            (end.acknowledged > 0 && end.acknowledged < end.elements);
    if (!right || !counts) {
        find(nameOf(operation.variable) + " is " +
             inWords(end.state, end.acknowledged, end.elements) + ", and " +
             std::to_string(operation.reached) + " are in the controller");
    }
}

void Books::answered(std::uint64_t operation, const Outcome& outcome)
{
    const Lock lock(mutex_);
    const auto found = open_.find(operation);
    Operation& its = found->second;
    its.answered = true;
    Answers& answers = of(its.kind);
    if (isUnderWay(outcome)) {
        ++answers.underWay;
        return closeWhenOver(found);
    }
    ++answers.told[static_cast<int>(outcome.state)];
    if (its.kind == OperationKind::read && outcome.ok()) {
        checkRead(its, outcome);
    }
    if (its.end) {
        compare(its, outcome, *its.end);
    } else {
        its.answer = outcome;
    }
    closeWhenOver(found);
}

void Books::compare(const Operation& operation, const Outcome& outcome, const End& end)
{
    if (outcome.state != end.state || outcome.elements != end.elements ||
        outcome.acknowledged != end.acknowledged) {
        find("the caller was told that " + nameOf(operation.variable) + " is " +
             inWords(outcome.state, outcome.acknowledged, outcome.elements) +
             ", and the feed that it is " + inWords(end.state, end.acknowledged, end.elements));
    }
}

void Books::closeWhenOver(Open::iterator operation)
{
    const Operation& its = operation->second;
    if (its.end && its.key != 0 && (its.answered || !its.awaited)) {
        open_.erase(operation);
    }
    // Keys stay known for a while, for ends that are told twice.
    while (byKey_.size() > kMostKeys && open_.count(byKey_.begin()->second) == 0) {
        byKey_.erase(byKey_.begin());
    }
}

void Books::checkRead(const Operation& operation, const Outcome& outcome)
{
    const Variable& variable = plant_.variable(operation.variable);
    const int width = bytesOf(plant_.place(variable.firstPlace));
    if (outcome.bytes.size() != width * variable.places) {
        return find("a read of " + nameOf(operation.variable) + " brought " +
                    std::to_string(outcome.bytes.size()) + " bytes");
    }
    ++readsChecked_;
    const Time end = now();
    Words words;
    for (int part = 0; part < variable.places; ++part) {
        words.push_back(numberIn(outcome.bytes, part * width, width));
        findIf(memory_.couldRead(variable.firstPlace + part, words.back(), operation.askedAt, end),
               "a read of " + nameOf(operation.variable) + " part " + std::to_string(part) +
                   " brought " + std::to_string(words.back()) + ", which did not stand there");
    }
    if (variable.isText()) {
        findIf(memory_.couldReadWhole(operation.variable, words, operation.askedAt, end),
               "a read of " + nameOf(operation.variable) + " mixed two texts");
    }
}

void Books::polled(int variable, const QByteArray& bytes, Time from, Time to)
{
    const Lock lock(mutex_);
    const Variable& its = plant_.variable(variable);
    const int width = bytesOf(plant_.place(its.firstPlace));
    if (bytes.size() != width * its.places) {
        return find("polling " + nameOf(variable) + " brought " + std::to_string(bytes.size()) +
                    " bytes");
    }
    ++polledChecked_;
    for (int part = 0; part < its.places; ++part) {
        const int place = its.firstPlace + part;
        const std::uint32_t value = numberIn(bytes, part * width, width);
        if (!plant_.belongs(place, value)) {
            find("polling " + nameOf(variable) + " brought another place's " +
                 std::to_string(value));
        }
        if (its.places == 1) { // the parts of a text come with several replies
            findIf(memory_.couldRead(place, value, from, to),
                   "polling " + nameOf(variable) + " brought " + std::to_string(value) +
                       ", which did not stand there");
        }
    }
}

void Books::cached(int variable, const QByteArray& bytes)
{
    const Lock lock(mutex_);
    const Variable& its = plant_.variable(variable);
    const int width = bytesOf(plant_.place(its.firstPlace));
    for (int part = 0; part < its.places && (part + 1) * width <= bytes.size(); ++part) {
        const std::uint32_t value = numberIn(bytes, part * width, width);
        if (!plant_.belongs(its.firstPlace + part, value)) {
            find("the cache of " + nameOf(variable) + " holds another place's " +
                 std::to_string(value));
        }
    }
}

bool Books::bitNow(int variable, int bit)
{
    const Lock lock(mutex_);
    const bool value = memory_.now(plant_.variable(variable).firstPlace) >> bit & 1;
    const BitState& state = bits_[{variable, bit}];
    if (state.known == Known::yes && state.value != value) {
        find(nameOf(variable) + " bit " + std::to_string(bit) + " changed, and nobody wrote it");
    }
    return value;
}

void Books::bitAnswered(int variable, int bit, bool wanted, const Outcome& outcome, Time asked)
{
    const Lock lock(mutex_);
    ++bitAnswers_.asked;
    const bool waited = outcome.reason == kBitHadToWait && outcome.acknowledged == 0 &&
                        outcome.state == OutcomeState::notSent;
    const bool notRead = outcome.reason.startsWith(kBitNotRead);
    if (!waited) {
        ++bitReads_;
    }
    ++bitWrites_; // also one that ended before the driver was called
    ++(isUnderWay(outcome) ? bitAnswers_.underWay
                           : bitAnswers_.told[static_cast<int>(outcome.state)]);
    bitAnswers_.notAwaited += waited || notRead ? 1 : 0;
    BitState& state = bits_[{variable, bit}];
    const int place = plant_.variable(variable).firstPlace;
    const bool value = memory_.now(place) >> bit & 1;
    if (outcome.ok()) {
        if (value != wanted) {
            find(nameOf(variable) + " bit " + std::to_string(bit) + " is done and does not stand");
        }
        state = {Known::yes, wanted};
        return;
    }
    const bool mayBeThere =
        outcome.state == OutcomeState::unknown ||
        (outcome.state == OutcomeState::refused && memory_.doubtedAt(place) >= asked);
    if (mayBeThere) {
        state.known = Known::no;
    } else if (state.known == Known::yes && value != state.value) {
        find(nameOf(variable) + " bit " + std::to_string(bit) + " is " +
             host::outcomeWord(outcome.state) + " and stands");
    }
}

std::size_t Books::open() const
{
    const Lock lock(mutex_);
    return openEnds_;
}

void Books::found(const std::string& finding)
{
    const Lock lock(mutex_);
    find(finding);
}

void Books::find(const std::string& finding)
{
    ++findingCount_;
    if (findings_.size() < kMostFindings) {
        findings_.push_back(finding);
    }
}

void Books::findIf(MemoryBook::Check check, const std::string& finding)
{
    if (check == MemoryBook::Check::wrong) {
        find(finding);
    } else if (check == MemoryBook::Check::tooLongAgo) {
        ++tooLongAgo_;
    }
}

std::string Books::nameOf(int variable) const
{
    return plant_.variable(variable).element.addressText.toStdString();
}

std::vector<std::string> Books::findings() const
{
    const Lock lock(mutex_);
    return findings_;
}

Answers Books::answers(OperationKind kind) const
{
    const Lock lock(mutex_);
    return answers_[static_cast<int>(kind)];
}

} // namespace tavmir::soak
