#include "model/session.h"

#include "model/step_table.h"
#include "support/driver_test.h"
#include "support/qt_compat.h"

#include <algorithm>
#include <cstring>

namespace tavmir::model
{

namespace
{

Session* active = nullptr;

Stream streamHere()
{
#if QT_VERSION < 0x050000
    return Stream::Qt4;
#else
    return Stream::Qt5;
#endif
}

} // namespace

Session::Session(std::uint64_t worldSeed) : model_(streamHere()), words_()
{
    test::resetDriver();
    active = this;
    test::installMessageHook(&Session::message);
    for (std::size_t i = 0; i < ComWords; ++i) {
        const auto word = static_cast<std::int32_t>(0x5A0000 + i);
        model_.com[i] = word;
        std::memcpy(reinterpret_cast<char*>(&words_) + 4 * i, &word, sizeof word);
    }
    SetComInfo(&words_);
    model_.setComInfo();
    RegistCallBackFuncIntf(&Session::varDone, &Session::commFail);
    SeededRandom random(worldSeed);
    setWord(DefaultStation, random.between(-1, 300));
    setWord(RetryLimit, random.between(0, 3));
    setWord(RetryCount, 0);
    setWord(StationMode, random.between(0, 1));
    setWord(WriteMode, random.percent(85) ? 2 : 0);
    setWord(ScanDone, 0);
    setWord(ComStation, random.between(0, 99));
    passLabels(random);
}

Session::~Session()
{
    test::installMessageHook(nullptr);
    test::resetDriver();
    active = nullptr;
}

void Session::setWord(ComWord word, std::int32_t value)
{
    model_.com[static_cast<std::size_t>(word)] = value;
    std::memcpy(reinterpret_cast<char*>(&words_) + 4 * word, &value, sizeof value);
}

void Session::note(const std::string& text)
{
    if (tracing) {
        trace.push_back(text);
    }
}

void Session::differ(const std::string& text)
{
    if (difference_.empty()) {
        difference_ = text;
    }
}

void Session::compareResults(std::int64_t expected, std::int64_t actual)
{
    if (expected != actual) {
        differ("result: expected " + std::to_string(expected) + ", driver returned " +
               std::to_string(actual));
    }
}

std::string Session::perform(const Step& step)
{
    SeededRandom random(step.seed);
    model_.events.clear();
    events_.clear();
    (this->*StepTable::callOf(step.kind))(random);

    for (std::size_t i = 0; i < std::max(events_.size(), model_.events.size()); ++i) {
        if (i < events_.size() && i < model_.events.size() && events_[i] == model_.events[i]) {
            continue;
        }
        differ("event " + std::to_string(i) + ": expected " +
               (i < model_.events.size() ? shown(model_.events[i]) : "none") + ", driver made " +
               (i < events_.size() ? shown(events_[i]) : "none"));
    }
    differ(differenceOfLocks());
    differ(differenceOfState(model_, PLC_driver, words_));
    return difference_;
}

std::string Session::differenceOfLocks()
{
    if (model_.listMutexLeftLocked) {
        model_.listMutexLeftLocked = false;
        if (test::isFree(PLC_driver.listMutex)) {
            return "listMutex is free after a rebuild that was abandoned";
        }
        PLC_driver.listMutex.unlock();
    }
    if (!test::isFree(PLC_driver.listMutex)) {
        return "listMutex was left locked";
    }
    if (!test::isFree(PLC_driver.cacheMutex)) {
        return "cacheMutex was left locked";
    }
    return test::isFree(PLC_driver.stationMutex) ? "" : "stationMutex was left locked";
}

int Session::varDone(int station, int hostKey, int varKey, int result)
{
    Event event;
    event.kind = Event::VarDone;
    event.numbers = {station, hostKey, varKey, result};
    active->events_.push_back(event);
    active->readInCallback();
    return -1;
}

int Session::commFail(QList<RW_VAR> vars, int hostKey, int flag)
{
    Event event;
    event.kind = Event::CommFail;
    event.numbers = {vars.size(), hostKey, flag, 0};
    active->events_.push_back(event);
    active->readInCallback();
    return -1;
}

// The one call that a callback may make: `listMutex` is held, the caches are free.
void Session::readInCallback()
{
    if (test::isFree(PLC_driver.listMutex)) {
        differ("a callback ran without listMutex");
    }
    if (!test::isFree(PLC_driver.cacheMutex)) {
        differ("a callback ran with cacheMutex held");
    }
    if (model_.callbackReadAddress.empty()) {
        return;
    }
    Event event;
    event.kind = Event::CallbackRead;
    QByteArray data("stale");
    std::vector<Event> before;
    before.swap(events_);
    event.numbers[0] = GetRegisterData(qtText(model_.callbackReadAddress), 0, 0, 0, &data, 2);
    before.insert(before.end(), events_.begin(), events_.end());
    events_.swap(before);
    event.bytes = modelBytes(data);
    events_.push_back(event);
}

void Session::message(QtMsgType type, const QString& text)
{
    Event event;
    event.line = modelText(text);
    active->events_.push_back(event);
    if (type != QtDebugMsg) {
        active->differ("a diagnostic line of another type than QtDebugMsg");
    }
    const bool outsideLocks = text.contains("  197 TRACE") || text.contains("  204 ERROR") ||
                              text.contains("  357 INFO") || text.contains("  109 TRACE") ||
                              text.contains("\"DataCom\"") || text.contains("\"SetRegisterData\"");
    if (outsideLocks && !test::isFree(PLC_driver.listMutex)) {
        active->differ("listMutex was held while a line was written: " + shown(event));
    }
    if (outsideLocks && !test::isFree(PLC_driver.cacheMutex)) {
        active->differ("cacheMutex was held while a line was written: " + shown(event));
    }
}

} // namespace tavmir::model
