// Frames as readable lines, with the names of the project's variables and their values as the
// project shows them.
#ifndef TAVMIR_CONTROLLER_TRACE_H
#define TAVMIR_CONTROLLER_TRACE_H

#include "request.h"

#include "project/element_names.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace tavmir::controller
{

// "#7 station 1 write words: Main.W=4660, 116=1", or what is wrong with the request.
//   frame    of FrameDecoder
//   request  the frame taken apart
QString requestInWords(const QByteArray& frame, const Request& request,
                       const project::ElementNames& names);

// The same of reply bytes as they go out, a fault's work included: any bytes can be shown.
QString replyInWords(const QByteArray& reply, const project::ElementNames& names);

} // namespace tavmir::controller

#endif
