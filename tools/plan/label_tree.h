// The project's labels and types as the tree of records that the driver takes.
#ifndef TAVMIR_PLAN_LABEL_TREE_H
#define TAVMIR_PLAN_LABEL_TREE_H

#include "project/address_resolver.h"
#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir::host
{

// One record per label, for PassVarName_2, and one for addresses without a variable
// (project/raw_address.h). Beside each text X the tree holds X~words, the same place as 16-bit
// words: polling a text by its own name would poll its first word only. A real is a double word
// there, so that a request need not end between the two.
QList<Label_Type_Info> labelTree(const project::Project& project);

// The address text under which the element is polled: its own, for a text that of its words.
QString pollAddress(const project::Element& element);

// The count that polls the whole element under pollAddress.
int pollCount(const project::Element& element);

} // namespace tavmir::host

#endif
