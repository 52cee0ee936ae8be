// The session's life, the operator, and the reader of the feed. The workers are in workers.cpp.
#include "runtime_under_test.h"

#include "plan/wire_element.h"

namespace tavmir::soak
{

namespace
{

using std::chrono::milliseconds;

host::SessionOptions sessionOptions()
{
    host::SessionOptions options;
    options.polls = false; // what the project says gives every element its station only
    options.passMs = 10;
    return options;
}

void rest(int ms)
{
    std::this_thread::sleep_for(milliseconds(ms));
}

} // namespace

RuntimeUnderTest::RuntimeUnderTest(const Plant& plant, Books& books,
                                   std::unique_ptr<host::Driver> driver, std::uint64_t seed)
    : plant_(plant), books_(books), all_(host::polledElements(plant.project())),
      session_(std::move(driver), plant.project(), sessionOptions()), seed_(seed)
{
}

RuntimeUnderTest::~RuntimeUnderTest()
{
    stopWork();
    stopSession();
    stopReading();
}

void RuntimeUnderTest::start()
{
    reader_ = session_.feed().subscribe();
    const QString problem = session_.setUp();
    if (!problem.isEmpty()) {
        books_.found(problem.toStdString());
    }
    session_.start();
    feed_ = std::thread([this] { readFeed(); });
    workAgain();
}

void RuntimeUnderTest::workAgain()
{
    stopWork_ = false;
    seed_ += 100;
    for (int i = 0; i < kWorkers; ++i) {
        const std::uint64_t seed = seed_ + static_cast<std::uint64_t>(i);
        workers_.emplace_back([this, i, seed] { work(i, seed); });
    }
    workers_.emplace_back([this] { operate(seed_ + kWorkers); });
}

void RuntimeUnderTest::stopWork()
{
    stopWork_ = true;
    for (std::thread& worker : workers_) {
        worker.join();
    }
    workers_.clear();
}

void RuntimeUnderTest::stopReading()
{
    stopReading_ = true;
    if (feed_.joinable()) {
        feed_.join();
        readNow();
    }
}

std::vector<std::uint64_t> RuntimeUnderTest::progress() const
{
    return std::vector<std::uint64_t>(progress_.begin(), progress_.end());
}

void RuntimeUnderTest::operate(std::uint64_t seed)
{
    Dice dice(seed);
    while (!stopWork_) {
        tick(OperatorThread);
        const int kind = dice.below(20);
        if (kind == 0) {
            switchStation(dice);
        } else if (kind < 3) {
            joinFeed();
        } else {
            pollSome(dice);
        }
        rest(20 + dice.below(100));
    }
}

// Each class of values is polled from one station only, or not at all.
void RuntimeUnderTest::pollSome(Dice& dice)
{
    std::array<int, 3> stations{};
    for (int& station : stations) {
        const int number = dice.below(static_cast<int>(kStations.size()) + 1);
        station = number == 0 ? -1 : kStations[Plant::asIndex(number - 1)];
    }
    if (dice.below(8) == 0) {
        stations.fill(-1); // nothing is polled
    }
    const bool texts = dice.below(4) == 0;
    std::vector<host::PolledElement> polled;
    for (const host::PolledElement& entry : all_) {
        const Variable& variable = plant_.variable(plant_.variableNamed(entry.element.addressText));
        const auto elements = static_cast<std::size_t>(host::elementClassOf(entry.element));
        if (entry.station == stations[elements] && (texts || !variable.isText())) {
            polled.push_back(entry);
        }
    }
    const QString problem = session_.poll(polled);
    if (!problem.isEmpty()) {
        books_.found("polling: " + problem.toStdString());
    }
    ++polls_;
}

void RuntimeUnderTest::switchStation(Dice& dice)
{
    const int station = kStations[Plant::asIndex(dice.below(static_cast<int>(kStations.size())))];
    session_.enableStation(station, false);
    rest(5 + dice.below(20));
    session_.enableStation(station, true);
}

// Who comes later is told first what is polled.
void RuntimeUnderTest::joinFeed()
{
    const std::unique_ptr<host::FeedReader> reader = session_.feed().subscribe();
    rest(30);
    bool first = true;
    reader->read([&](const host::FeedEntry& entry) {
        const bool right = entry.kind == host::FeedKind::planChanged && entry.standing;
        if (first && !right) {
            books_.found("a new reader of the feed was not told first what is polled");
        }
        first = false;
    });
}

void RuntimeUnderTest::readFeed()
{
    while (!stopReading_) {
        tick(ReaderThread);
        readNow();
        rest(3);
    }
}

void RuntimeUnderTest::readNow()
{
    reader_->read([this](const host::FeedEntry& entry) { take(entry); },
                  [this](quint64 count) { figures_.gap(count); });
}

void RuntimeUnderTest::take(const host::FeedEntry& entry)
{
    figures_.take(entry);
    if (entry.kind == host::FeedKind::operationEnded) {
        books_.ended(entry);
    }
    if (entry.kind == host::FeedKind::exchange) {
        tick(CycleThread);
        // A late reply to the first attempt may answer a later one.
        if (entry.exchange.attempt == 1) {
            requestSent_ = entry.exchange.sentAt;
        }
        replied_ = entry.exchange.endedAt;
    }
    fold_.take(entry, [this](size_t place) { valueChanged(place); });
    if (entry.kind == host::FeedKind::planChanged) {
        planChanged();
    }
}

void RuntimeUnderTest::planChanged()
{
    folded_.clear();
    for (const host::PolledElement& entry : fold_.variables()) {
        folded_.push_back(plant_.variableNamed(entry.element.addressText));
    }
}

void RuntimeUnderTest::valueChanged(size_t place)
{
    books_.polled(folded_[place], fold_.value(place).bytes, requestSent_, replied_);
}

} // namespace tavmir::soak
