// The records that host and driver exchange, member by member. C++11, no Qt in the interface.
#ifndef TAVMIR_PROBE_RECORD_TABLE_H
#define TAVMIR_PROBE_RECORD_TABLE_H

#include <cstddef>
#include <vector>

namespace tavmir
{
namespace probe
{

// One member; position and size in bytes.
struct Member {
    const char* name;
    std::size_t offset;
    std::size_t size;
};

// One record; size and alignment in bytes, members in declaration order.
struct RecordLayout {
    const char* name;
    std::size_t size;
    std::size_t alignment;
    std::vector<Member> members;
};

// All records, as the host interface header and this compiler lay them out. Any thread.
std::vector<RecordLayout> recordTable();

} // namespace probe
} // namespace tavmir

#endif
