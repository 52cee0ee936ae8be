// One random host at work: every call goes to the driver and to the model, and after each the
// two are compared: result, events in order, locks, lists, counters, caches, words.
#ifndef TAVMIR_TESTS_MODEL_SESSION_H
#define TAVMIR_TESTS_MODEL_SESSION_H

#include "model/driver_model.h"
#include "model/qt_side.h"
#include "model/seeded_random.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <string>
#include <vector>

namespace tavmir::model
{

// One call of the host: which kind, and the seed of its arguments.
struct Step {
    unsigned kind = 0; // below StepTable::kKinds
    std::uint64_t seed = 0;
};

class Session
{
public:
    // A fresh driver, a random project handed over. One session at a time.
    explicit Session(std::uint64_t worldSeed);
    ~Session();

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Makes the call; the first difference, or empty.
    std::string perform(const Step& step);

    const DriverModel& model() const { return model_; }

    // When on, every call is kept in words.
    bool tracing = false;
    std::vector<std::string> trace;

private:
    friend struct StepTable;

    void communicate(SeededRandom& random);
    void answer(SeededRandom& random);
    void wholeTurn(SeededRandom& random);
    void checkRemote(SeededRandom& random);
    void tamperWithRequest(SeededRandom& random);
    void rebuild(SeededRandom& random);
    void addRead(SeededRandom& random);
    void addWrite(SeededRandom& random);
    void addOnceRead(SeededRandom& random);
    void get(SeededRandom& random);
    void set(SeededRandom& random);
    void storeLocally(SeededRandom& random);
    void parse(SeededRandom& random);
    void stations(SeededRandom& random);
    void passLabels(SeededRandom& random);
    void changeWords(SeededRandom& random);
    void changeCallbacks(SeededRandom& random);
    void constants(SeededRandom& random);

    Var randomRecord(SeededRandom& random);
    Bytes randomReply(SeededRandom& random, int& received);
    void setWord(ComWord word, std::int32_t value);
    void note(const std::string& text);
    void differ(const std::string& text);
    void compareResults(std::int64_t expected, std::int64_t actual);
    std::string differenceOfLocks();

    static int varDone(int station, int hostKey, int varKey, int result);
    static int commFail(QList<RW_VAR> vars, int hostKey, int flag);
    static void message(QtMsgType type, const QString& text);
    void readInCallback();

    DriverModel model_;
    ComInfo words_;
    std::vector<Label> labels_;
    std::vector<Text> addresses_;
    std::vector<Event> events_; // what the driver did
    std::string difference_;
};

} // namespace tavmir::model

#endif
