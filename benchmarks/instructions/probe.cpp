// Runs one kind of call a given number of times, for a tool that counts instructions.
// Usage: tavmir_instruction_probe CASE CALLS    CASE may be "all": one case after the other
//        tavmir_instruction_probe --list
//
// The calls are made inside the function `tavmir_measured_calls`, which is called from `main`
// once a case; what is not measured is done before it.
#include "address/Func_Check.h"
#include "support/plant.h"
#include "support/quiet_messages.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

using namespace tavmir::bench;

const int kPolled = 1000;
const int kVariables = 1000;

QString address;
QByteArray data;
int count = 1;

// Each `prepare…` sets the driver up, each call is then made again and again.

void preparePolling(int type)
{
    for (int i = 0; i < kPolled; ++i) {
        RW_VAR var;
        var.dataType = type;
        var.elementAddress = 64 * i;
        var.count = 1;
        AddListReadVar(&var);
    }
    // Two passes, so that all values are in the caches and the list has its room to turn.
    for (int i = 0; i < 2 * kPolled; i += PLC_driver.batchCount) {
        goodTurn();
    }
}

void prepareBitPolling()
{
    preparePolling(kBit);
}

void prepareWordPolling()
{
    preparePolling(kWord);
}

void prepareDoubleWordPolling()
{
    preparePolling(kDoubleWord);
}

void turn()
{
    goodTurn();
}

void prepareWrites() {}

void writeTurn()
{
    RW_VAR var;
    var.hostData2 = 1;
    var.dataType = kWord;
    var.count = 1;
    var.value = QByteArray("\x12\x34", 2);
    for (int i = 0; i < 38; ++i) {
        var.elementAddress = 16 * i;
        AddListWriteVar(&var);
    }
    PLC_driver.writeTurns = 0;
    goodTurn();
}

void prepareAccess(const char* text, int elements)
{
    passMixedPlant();
    address = QString::fromLatin1(text);
    count = elements;
    data = QByteArray(400, '\1');
    PLC_driver.comInfo->writeMode = 0;
    SetRegisterData(address, 0, QString(), 1, &data, count, 1, 1);
}

void preparePlain()
{
    prepareAccess("Main.Speed", 1);
}

void prepareArray()
{
    prepareAccess("Main.Recipe[0]", 100);
}

void prepareBitAccess()
{
    prepareAccess("Main.State.bit[5]", 1);
}

void prepareMember()
{
    prepareAccess("Main.Axis[3].Position", 2);
}

void read()
{
    GetRegisterData(address, 0, 0, 0, &data, count);
}

void write()
{
    SetRegisterData(address, 0, QString(), 1, &data, count, 1, 1);
}

void prepareParsing()
{
    passPlant(kVariables, kWord);
    address = "Main." + variableName(kVariables - 1);
}

void parse()
{
    ControlInformationM info;
    get_label_address_info(address, info);
}

QList<HOSTVAR> polled;

void prepareRebuild()
{
    const int kRebuilt = 20;
    passPlant(kVariables, kWord);
    polled = polledVariables(kRebuilt);
}

void rebuild()
{
    ReCreatReadVarList(&polled);
}

struct Case {
    const char* name;
    void (*prepare)();
    void (*call)();
};

const Case kCases[] = {
    {"turn_45_bits", prepareBitPolling, turn},
    {"turn_38_words", prepareWordPolling, turn},
    {"turn_28_dwords", prepareDoubleWordPolling, turn},
    {"queue_and_write_38_words", prepareWrites, writeTurn},
    {"read_plain", preparePlain, read},
    {"read_array_of_100", prepareArray, read},
    {"read_bit", prepareBitAccess, read},
    {"read_member", prepareMember, read},
    {"write_plain", preparePlain, write},
    {"parse_last_of_1000", prepareParsing, parse},
    {"parse_member", prepareMember, parse},
    {"rebuild_20_words", prepareRebuild, rebuild},
};

bool isChosen(const char* chosen, const Case& one)
{
    return std::strcmp(chosen, "all") == 0 || std::strcmp(chosen, one.name) == 0;
}

} // namespace

extern "C" __attribute__((noinline)) void tavmir_measured_calls(void (*call)(), long calls)
{
    for (long i = 0; i < calls; ++i) {
        call();
    }
}

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        for (const Case& one : kCases) {
            std::puts(one.name);
        }
        return 0;
    }
    if (argc != 3) {
        std::fputs("usage: tavmir_instruction_probe CASE CALLS | --list\n", stderr);
        return 2;
    }
    discardMessages();
    for (const Case& one : kCases) {
        if (!isChosen(argv[1], one)) {
            continue;
        }
        resetDriver();
        one.prepare();
        one.call();
        tavmir_measured_calls(one.call, std::atol(argv[2]));
    }
    return 0;
}
