// The border between the model and the driver: values into Qt's types, and comparing what the
// driver holds with what the model says, without ever sharing the driver's containers (a shared
// copy would make a later write move the entries that a batch points at).
#ifndef TAVMIR_TESTS_MODEL_QT_SIDE_H
#define TAVMIR_TESTS_MODEL_QT_SIDE_H

#include "address/Func_Check.h"
#include "model/driver_model.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <string>

namespace tavmir::model
{

QString qtText(const Text& text);
Text modelText(const QString& text);
QByteArray qtBytes(const Bytes& bytes);
Bytes modelBytes(const QByteArray& bytes);
RW_VAR qtVar(const Var& var);
HOSTVAR qtPolled(const PolledVariable& variable);
Label_Type_Info qtLabel(const Label& label);

// Each names the first difference, or is empty when there is none.
std::string differenceOfVars(const Var& expected, const RW_VAR& actual);
std::string differenceOfResolved(const Resolved& expected, const ControlInformationM& actual);
bool sameLabel(const Label& expected, const Label_Type_Info& actual);
std::string differenceOfRequests(const Request& expected, const Protocol& actual);

// Everything that the context and the connection record hold.
std::string differenceOfState(const DriverModel& model, const Communication_Protocol& driver,
                              const ComInfo& words);

// For reports.
std::string shown(const Text& text);
std::string shown(const Bytes& bytes);
std::string shown(const Event& event);

} // namespace tavmir::model

#endif
