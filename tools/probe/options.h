// The probe's command line.
#ifndef TAVMIR_PROBE_OPTIONS_H
#define TAVMIR_PROBE_OPTIONS_H

#include "wire/endpoint.h"

#include <string>

namespace tavmir
{
namespace probe
{

struct Options {
    bool help;
    bool version;
    bool records;              // print every member's position, not only the records' sizes
    std::string library;       // empty: that of this program's installation, else the loader's
    wire::Endpoint controller; // without host: no read
    int station;
    int dataType;        // 1, 4, 6, 7 or 10
    int elementAddress;  // in bits
    int count;           // elements
    std::string capture; // file; empty: none
    int timeoutMs;       // for the connection and for each answer

    Options()
        : help(false), version(false), records(false), station(1), dataType(0), elementAddress(0),
          count(1), timeoutMs(3000)
    {
    }
};

const char* usage();

// Fills `options` from the arguments behind the program's name.
//   result  empty, or what is wrong with them in one line
std::string parseOptions(int argc, const char* const argv[], Options& options);

} // namespace probe
} // namespace tavmir

#endif
