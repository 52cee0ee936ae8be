// Lines put into text.
#include "feed_trace.h"

namespace tavmir::host
{

FeedTrace::FeedTrace(const project::ElementNames& names, bool withBytes, const Show& show)
    : lines_(names, [withBytes, show](const FeedLine& told) {
          wire::TraceLine line = static_cast<const wire::TraceLine&>(told);
          if (!withBytes) {
              line.bytes = nullptr;
          }
          show(wire::traceLine(line));
      })
{
}

} // namespace tavmir::host
