// Where in the polled list an address stands.
#ifndef TAVMIR_PAGE_POLLED_PLACE_H
#define TAVMIR_PAGE_POLLED_PLACE_H

#include "plan/polled_index.h"

namespace tavmir::host
{

// What is polled under this very address; none: nothing is.
std::optional<size_t> placeOf(const std::vector<PolledElement>& polled, const QString& address);

// What is polled as this variable, in whatever way its address is spelt: an index as 1,C or 1,c.
std::optional<size_t> placeOfVariable(const std::vector<PolledElement>& polled,
                                      const project::Element& element);

// What shows the memory that this element is: the variable itself, else another one that lies
// there at the same station.
std::optional<size_t> placeOfMemory(const std::vector<PolledElement>& polled,
                                    const project::Element& element, int station);

} // namespace tavmir::host

#endif
