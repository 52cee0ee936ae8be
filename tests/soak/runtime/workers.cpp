// What the eight workers do.
#include "runtime_under_test.h"

namespace tavmir::soak
{

namespace
{

constexpr int kMostAtOnce = 6;
constexpr int kPatientMs = 60000;
constexpr std::chrono::seconds kTooLong{20};

// From too short for any request to long enough for a bad line; and now and then so long that who
// waits for a lost operation is noticed.
host::Deadline deadline(Dice& dice)
{
    if (dice.below(10) == 0) {
        return host::Deadline(kPatientMs);
    }
    const int kind = dice.below(10);
    if (kind == 0) {
        return host::Deadline(dice.below(3));
    }
    if (kind < 3) {
        return host::Deadline(3 + dice.below(18));
    }
    return host::Deadline(kind < 7 ? 50 + dice.below(250) : 1000 + dice.below(3000));
}

// Seldom: what nobody claims the session keeps for a while.
bool isAwaited(Dice& dice)
{
    return dice.below(50) != 0;
}

} // namespace

void RuntimeUnderTest::work(int worker, std::uint64_t seed)
{
    Dice dice(seed);
    while (!stopWork_) {
        tick(worker);
        const Time begun = std::chrono::steady_clock::now();
        workOnce(worker, dice);
        if (std::chrono::steady_clock::now() - begun > kTooLong) {
            books_.found("a caller waited too long");
        }
        std::this_thread::sleep_for(std::chrono::microseconds(dice.below(3000)));
    }
}

void RuntimeUnderTest::workOnce(int worker, Dice& dice)
{
    const int kind = dice.below(100);
    if (kind < 50) {
        write(worker, dice);
    } else if (kind < 62) {
        writeBit(worker, dice);
    } else if (kind < 96) {
        read(dice);
    } else {
        lookAtCache(dice);
    }
}

int RuntimeUnderTest::variableToWrite(int worker, Dice& dice) const
{
    if (dice.below(150) == 0) {
        // Each of them is one worker's: the order of its writes must be known.
        const std::vector<int>& refused = plant_.refused();
        int number = refused[Plant::asIndex(dice.below(static_cast<int>(refused.size())))];
        while (plant_.variable(number).owner != worker) {
            number = refused[Plant::asIndex(dice.below(static_cast<int>(refused.size())))];
        }
        return number;
    }
    const std::vector<int>& own = plant_.ownedBy(worker);
    return own[Plant::asIndex(dice.below(static_cast<int>(own.size())))];
}

void RuntimeUnderTest::write(int worker, Dice& dice)
{
    struct Given {
        std::uint64_t operation;
        host::OperationId id;
    };
    std::vector<Given> awaited;
    const int count = dice.below(4) == 0 ? 2 + dice.below(kMostAtOnce - 1) : 1;
    for (int i = 0; i < count; ++i) {
        const int variable = variableToWrite(worker, dice);
        const Books::Asked asked = books_.askWrite(variable);
        const host::OperationId id =
            session_.queueWrite(plant_.variable(variable).element, asked.bytes, deadline(dice));
        const bool waits = isAwaited(dice);
        books_.given(asked.operation, id.key, waits);
        if (waits) {
            awaited.push_back({asked.operation, id});
        }
    }
    for (const Given& given : awaited) {
        books_.answered(given.operation, session_.await(given.id));
    }
}

void RuntimeUnderTest::read(Dice& dice)
{
    struct Given {
        std::uint64_t operation;
        host::OperationId id;
    };
    std::vector<Given> awaited;
    const int count = dice.below(4) == 0 ? 2 + dice.below(3) : 1;
    for (int i = 0; i < count; ++i) {
        const int variable = dice.below(static_cast<int>(plant_.variables().size()));
        const Books::Asked asked = books_.askRead(variable);
        const host::OperationId id =
            session_.queueRead(plant_.variable(variable).element, deadline(dice));
        const bool waits = isAwaited(dice);
        books_.given(asked.operation, id.key, waits);
        if (waits) {
            awaited.push_back({asked.operation, id});
        }
    }
    for (const Given& given : awaited) {
        books_.answered(given.operation, session_.await(given.id));
    }
}

// Every bit has one writer, every word eight.
void RuntimeUnderTest::writeBit(int worker, Dice& dice)
{
    const std::vector<int>& flags = plant_.flags();
    const int variable = flags[Plant::asIndex(dice.below(static_cast<int>(flags.size())))];
    const int bit = 2 * worker + dice.below(2);
    const bool wanted = !books_.bitNow(variable, bit);
    const Time asked = std::chrono::steady_clock::now();
    const Outcome outcome = session_.write(plant_.bitOf(variable, bit),
                                           QByteArray(1, wanted ? '\1' : '\0'), deadline(dice));
    books_.bitAnswered(variable, bit, wanted, outcome, asked);
}

void RuntimeUnderTest::lookAtCache(Dice& dice)
{
    const int variable = dice.below(static_cast<int>(plant_.variables().size()));
    if (plant_.variable(variable).kind != Kind::flags) {
        books_.cached(variable, session_.cachedValue(plant_.variable(variable).element));
    }
}

} // namespace tavmir::soak
