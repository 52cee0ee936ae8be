// The latest frames in words, put together when they are asked for.
#ifndef TAVMIR_PAGE_FRAMES_JSON_H
#define TAVMIR_PAGE_FRAMES_JSON_H

#include "kept_entries.h"
#include "project/element_names.h"

#include <string>

namespace tavmir::host
{

// {"frames":[{"id","at","beforeMs","way","text","bytes","bad","elapsedMs"}…],"missed"}: the newest
// `limit` of those behind the number `since`, oldest first; `missed` counts what happened behind
// `since` and is not among them.
std::string framesJson(const KeptEntries& kept, const project::ElementNames& names, quint64 since,
                       size_t limit);

// "00 07 00"
QString bytesInWords(const unsigned char* bytes, size_t size);

} // namespace tavmir::host

#endif
