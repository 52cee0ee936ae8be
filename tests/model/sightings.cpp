#include "model/sightings.h"

namespace tavmir::model
{

namespace
{

// "Func_Check   "name"   347 ERROR …" is "Func_Check 347".
std::string nameOfLine(const Text& line)
{
    const std::string text(line.begin(), line.end());
    const std::size_t number = text.find("\"   ") + 4;
    return text.substr(0, text.find(' ')) + ' ' +
           text.substr(number, text.find(' ', number) - number);
}

const char* const kExpected[] = {"Communication_Protocol 547",
                                 "Communication_Protocol 548",
                                 "Func_Check 347",
                                 "Func_Check 376",
                                 "Func_Check 440",
                                 "Func_Check 511",
                                 "Func_Check 523",
                                 "Func_Check 539",
                                 "Func_Check 547",
                                 "Func_DealData 65",
                                 "Func_GetOrSetData 362",
                                 "Func_GetOrSetData 412",
                                 "Func_Init 197",
                                 "Func_Init 204",
                                 "Func_Init 234",
                                 "Func_Init 357",
                                 "Func_Write 67",
                                 "Func_Write 109",
                                 "commFailCallback",
                                 "varDoneCallback 1",
                                 "varDoneCallback 2",
                                 "read in a callback",
                                 "status 0",
                                 "status 1",
                                 "status 41",
                                 "status 52",
                                 "status 71",
                                 "status 82",
                                 "batch of 45 bits",
                                 "batch of 38 words",
                                 "batch of 28 double words",
                                 "one-shot list full",
                                 "five write turns",
                                 "five one-shot turns",
                                 "link failed",
                                 "disabled station",
                                 "head left marked after its reply",
                                 "scan done",
                                 "negative element address"};

} // namespace

void Sightings::lookAtEvent(const Event& event)
{
    switch (event.kind) {
    case Event::Line:
        ++counts_[nameOfLine(event.line)];
        break;
    case Event::VarDone:
        ++counts_["varDoneCallback " + std::to_string(event.numbers[3])];
        break;
    case Event::CommFail:
        ++counts_["commFailCallback"];
        break;
    case Event::CallbackRead:
        ++counts_["read in a callback"];
        break;
    }
}

void Sightings::look(const DriverModel& model)
{
    for (const Event& event : model.events) {
        lookAtEvent(event);
    }
    ++counts_["status " + std::to_string(model.retVar.status)];
    const auto saw = [&](const char* name, bool now) {
        if (now) {
            ++counts_[name];
        }
    };
    const bool inFlight = !model.protocolList.empty();
    const std::size_t size = model.batch.size();
    const int bytes = inFlight ? DriverModel::sizeOfType(model.batch[0].dataType) : 0;
    saw("batch of 45 bits", bytes == 5 && size == 45);
    saw("batch of 38 words", bytes == 6 && size == 38);
    saw("batch of 28 double words", bytes == 8 && size == 28);
    saw("negative element address", inFlight && model.batch[0].elementAddress < 0);
    saw("one-shot list full", model.onceReadList.size() == 1024);
    saw("five write turns", model.writeTurns == 5);
    saw("five one-shot turns", model.onceReadTurns == 5);
    saw("link failed", model.commFailed);
    saw("disabled station", !model.disabledStations.empty());
    saw("scan done", model.com[ScanDone] == 1);
    saw("head left marked after its reply",
        !inFlight && !model.readVarList.empty() && model.readVarList[0].status == -1);
}

std::vector<std::string> Sightings::missing() const
{
    std::vector<std::string> names;
    for (const char* name : kExpected) {
        if (counts_.count(name) == 0) {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace tavmir::model
