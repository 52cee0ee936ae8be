#include "driver_pair.h"

#include "support/driver_test.h"
#include "support/qt_compat.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tavmir::fuzz
{

namespace
{

std::vector<model::Event> driverEvents;

void message(QtMsgType, const QString& text)
{
    model::Event event;
    event.line = model::modelText(text);
    driverEvents.push_back(event);
}

int varDone(int station, int hostKey, int varKey, int result)
{
    model::Event event;
    event.kind = model::Event::VarDone;
    event.numbers = {station, hostKey, varKey, result};
    driverEvents.push_back(event);
    return 0;
}

int commFail(QList<RW_VAR> vars, int hostKey, int flag)
{
    model::Event event;
    event.kind = model::Event::CommFail;
    event.numbers = {vars.size(), hostKey, flag, 0};
    driverEvents.push_back(event);
    return 0;
}

} // namespace

void differ(const std::string& what)
{
    std::fprintf(stderr, "driver and model differ: %s\n", what.c_str());
    std::abort();
}

DriverPair::DriverPair() : model(model::Stream::Qt5), words_()
{
    test::resetDriver();
    test::installMessageHook(&message);
    driverEvents.clear();
    SetComInfo(&words_);
    model.setComInfo();
    RegistCallBackFuncIntf(&varDone, &commFail);
    setWord(model::WriteMode, 2);
    setWord(model::DefaultStation, 3);
    setWord(model::ComStation, 9);
}

DriverPair::~DriverPair()
{
    test::installMessageHook(nullptr);
    test::resetDriver();
}

void DriverPair::setWord(model::ComWord word, int value)
{
    model.com[static_cast<std::size_t>(word)] = value;
    std::memcpy(reinterpret_cast<char*>(&words_) + 4 * word, &value, sizeof value);
}

void DriverPair::setReplyLength(int length)
{
    if (model.protocolList.empty()) {
        return;
    }
    model.protocolList[0].replyLength = length;
    PLC_driver.protocolList[0].replyLength = length;
}

void DriverPair::compare()
{
    if (!(driverEvents == model.events)) {
        differ(driverEvents.empty() ? "events missing" : model::shown(driverEvents.back()));
    }
    driverEvents.clear();
    model.events.clear();
    const std::string difference = model::differenceOfState(model, PLC_driver, words_);
    if (!difference.empty()) {
        differ(difference);
    }
}

void DriverPair::passLabels(const std::vector<model::Label>& labels)
{
    QList<Label_Type_Info> list;
    for (const model::Label& label : labels) {
        list.append(model::qtLabel(label));
    }
    PassVarName_2(&list);
    model.passVarNames(labels);
}

void DriverPair::resolve(const model::Text& address)
{
    ControlInformationM info;
    model::Resolved resolved;
    const int result = get_label_address_info(model::qtText(address), info);
    if (result != model.resolve(address, resolved)) {
        differ("result of " + model::shown(address));
    }
    const std::string difference = model::differenceOfResolved(resolved, info);
    if (!difference.empty()) {
        differ(difference);
    }
    compare();
}

void DriverPair::read(const model::Text& address, int count)
{
    QByteArray data;
    model::Bytes expected;
    const int result = GetRegisterData(model::qtText(address), 0, 0, 0, &data, count);
    if (result != model.getRegisterData(address, expected, count)) {
        differ("result of a read");
    }
    if (expected != model::modelBytes(data)) {
        differ("values of a read");
    }
    compare();
}

void DriverPair::write(const model::Text& address, const model::Bytes& data, int count)
{
    QByteArray bytes = model::qtBytes(data);
    const int result =
        SetRegisterData(model::qtText(address), 0, QString(), 5, &bytes, count, 1, 2);
    if (result != model.setRegisterData(address, model::Text(), 5, data, count, 1, 2)) {
        differ("result of a write");
    }
    compare();
}

void DriverPair::addRead(const model::Var& var)
{
    const RW_VAR record = model::qtVar(var);
    AddListReadVar(&record);
    model.addListReadVar(var);
}

void DriverPair::addWrite(const model::Var& var)
{
    const RW_VAR record = model::qtVar(var);
    AddListWriteVar(&record);
    model.addListWriteVar(var);
}

void DriverPair::communicate()
{
    const bool request = ComCommunication() != nullptr;
    if (request != (model.comCommunication() != nullptr)) {
        differ("whether there is a request");
    }
    compare();
}

void DriverPair::answer(const model::Bytes& reply, int received)
{
    QByteArray bytes = model::qtBytes(reply);
    DataCom(&bytes, received);
    model.dataCom(reply, received);
    compare();
}

} // namespace tavmir::fuzz
