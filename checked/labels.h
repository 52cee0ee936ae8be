// Label records that contradict themselves. Private.
#ifndef TAVMIR_CHECKED_LABELS_H
#define TAVMIR_CHECKED_LABELS_H

#include "tavmir_kx_tcp/host_interface.h"

namespace tavmir
{
namespace checked
{

class Call;

void checkLabels(const QList<Label_Type_Info>& labels, const Call& call);

} // namespace checked
} // namespace tavmir

#endif
