// A second statement of what the driver does: every entry point, on one thread, over standard
// containers. It shares no code with the driver and is written to be read rather than to be
// fast: rules stand as they are said.
//
// Each call appends to `events` what a host sees beside the result: diagnostic lines and
// callbacks, in order.
#ifndef TAVMIR_TESTS_MODEL_DRIVER_MODEL_H
#define TAVMIR_TESTS_MODEL_DRIVER_MODEL_H

#include "model/address_model.h"
#include "model/line_text.h"
#include "model/model_records.h"

#include <array>
#include <deque>
#include <map>
#include <set>

namespace tavmir::model
{

using VarList = std::deque<Var>;

class DriverModel
{
public:
    explicit DriverModel(Stream stream) : stream_(stream) {}

    // Set-up.
    void setComInfo();
    void passVarNames(const std::vector<Label>& labels);
    int resolve(const Text& address, Resolved& resolved);

    // Registration.
    int addListReadVar(const Var& var);
    int addListWriteVar(const Var& var);
    int addListOnceReadVar(Var& var);
    int recreateReadVarList(const std::vector<PolledVariable>& variables);

    // The cycle. `reply` may be longer or shorter than `received` says.
    const Request* comCommunication();
    void dataCom(const Bytes& reply, int received); // its result is retVar.status
    int checkLocal(const Bytes& reply, int received);
    int checkRemote(const Bytes& reply, int received);
    int driverReturnValue(int kind) const;

    // Data exchange.
    int getRegisterData(const Text& address, Bytes& data, int count);
    int setRegisterData(const Text& address, const Text& text, int station, const Bytes& data,
                        int count, int hostKey, int varKey);
    void writeDataToLocal(const Var& var);

    // Stations.
    void enableStation(int station, int enable);
    bool isStationDisabled(int station) const { return disabledStations.count(station) != 0; }

    static int sizeOfType(int dataType);

    // State, as the driver's context holds it.
    std::array<std::int32_t, ComWords> com{};
    VarList readVarList;
    VarList pendingReadList;
    VarList writeVarList;
    VarList onceReadList;
    std::deque<Request> protocolList;
    std::set<int> disabledStations;
    Var retVar;
    std::int32_t cycleState = 100;
    std::int32_t writeTurns = 0;
    std::int32_t onceReadTurns = 0;
    std::int32_t scanCount = 0;
    bool commFailed = false;
    std::vector<Var> batch; // copies: the entries of a batch stay as they are
    std::uint16_t transactionCounter = 0;
    std::array<unsigned char, 1026> sendBuffer{};
    std::map<Text, Label> labelTable;
    std::map<std::int32_t, std::uint8_t> byteCache;
    std::map<std::int32_t, std::uint16_t> wordCache;
    std::map<std::int32_t, std::uint32_t> dwordCache;

    bool listMutexLeftLocked = false; // by a rebuild with a type that cannot be polled
    bool hasVarDoneCallback = true;
    bool hasCommFailCallback = true;

    // The host of the model reads this address from inside each callback; empty: it does not.
    Text callbackReadAddress;

    std::vector<Event> events;

private:
    LineText line(const char* file, const char* function, int number, const char* level) const
    {
        return LineText(stream_, file, function, number, level);
    }
    void emit(const LineText& text);
    void report(Event::Kind kind, std::array<std::int32_t, 4> numbers);

    void formBatch(const VarList& list);
    void readRegister();
    bool writeRegister();
    void queueRequest(std::size_t frameLength, int replyLength, int replyDataOffset);
    void putHeader(std::size_t frameLength);
    void putBig(std::size_t offset, std::uint32_t value, int bytes);
    void storeReply(const Bytes& reply);
    int errorReturn(int base) const;
    void endTurn();
    void finishVariables(VarList& list);
    void deliver(const Var& var);
    void writeBits(Var& var, const Resolved& resolved, const Bytes& data);
    int effectiveStation(int own) const;

    Stream stream_;
};

} // namespace tavmir::model

#endif
