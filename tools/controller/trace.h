// Frames as readable lines.
#ifndef TAVMIR_CONTROLLER_TRACE_H
#define TAVMIR_CONTROLLER_TRACE_H

#include "element_names.h"
#include "request.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace tavmir::controller
{

// "#7 station 1 write words: Main.W=4660, 116=1"
QString requestInWords(const Request& request, const ElementNames& names);

// The same of reply bytes as they go out, a fault's work included: any bytes can be shown. What
// makes no sense is counted in bytes.
QString replyInWords(const QByteArray& reply, const ElementNames& names);

} // namespace tavmir::controller

#endif
